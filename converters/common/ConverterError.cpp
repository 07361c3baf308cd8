#include "ConverterError.h"

#include <cstring>

ConverterError::ConverterError(Reason reason, const std::string &message)
    : std::runtime_error(message), why(reason)
{
}

ConverterError ConverterError::unreadableSource(const std::string &path, int error)
{
    return {Reason::UnreadableSource, "cannot read " + path + ": " + std::strerror(error)};
}

ConverterError ConverterError::unsupportedFormat(const std::string &path)
{
    return {Reason::UnsupportedFormat, path + " is not a WordPerfect document in a supported format"};
}

ConverterError ConverterError::damagedDocument(const std::string &path)
{
    return {Reason::DamagedDocument, path + " is damaged and cannot be converted"};
}

ConverterError ConverterError::encryptedWithoutPassword(const std::string &path)
{
    return {Reason::EncryptedWithoutPassword, path + " is encrypted and no password was given"};
}

ConverterError ConverterError::wrongPassword(const std::string &path)
{
    return {Reason::WrongPassword, "the password for " + path + " is wrong"};
}

ConverterError ConverterError::unsupportedEncryption(const std::string &path)
{
    return {Reason::UnsupportedEncryption,
            path + " is an encrypted WordPerfect 6 or later document, which cannot be decrypted"};
}

ConverterError ConverterError::cannotWriteDestination(const std::string &path, int error)
{
    return {Reason::CannotWriteDestination, "cannot write " + path + ": " + std::strerror(error)};
}

ConverterError ConverterError::failed(const std::string &message)
{
    return {Reason::Other, message};
}
