#include "ConversionError.h"

#include <cstring>

ConversionError::ConversionError(Reason reason, const std::string &message)
    : std::runtime_error(message), why(reason)
{
}

ConversionError ConversionError::unreadableSource(const std::string &path, int error)
{
    return {Reason::UnreadableSource, "cannot read " + path + ": " + std::strerror(error)};
}

ConversionError ConversionError::unsupportedFormat(const std::string &path)
{
    return {Reason::UnsupportedFormat, path + " is not a WordPerfect document in a supported format"};
}

ConversionError ConversionError::damagedDocument(const std::string &path)
{
    return {Reason::DamagedDocument, path + " is damaged and cannot be converted"};
}

ConversionError ConversionError::encryptedWithoutPassword(const std::string &path)
{
    return {Reason::EncryptedWithoutPassword, path + " is encrypted and no password was given"};
}

ConversionError ConversionError::wrongPassword(const std::string &path)
{
    return {Reason::WrongPassword, "the password for " + path + " is wrong"};
}

ConversionError ConversionError::unsupportedEncryption(const std::string &path)
{
    return {Reason::UnsupportedEncryption,
            path + " is an encrypted WordPerfect 6 or later document, which cannot be decrypted"};
}

ConversionError ConversionError::cannotWriteDestination(const std::string &path, int error)
{
    return {Reason::CannotWriteDestination, "cannot write " + path + ": " + std::strerror(error)};
}
