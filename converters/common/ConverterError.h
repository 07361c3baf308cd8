#pragma once

#include <stdexcept>
#include <string>

// Why a conversion stopped. Each failure is reported as exactly one line on stderr, so the
// message is complete on its own and names the file concerned where there is one.
class ConverterError : public std::runtime_error {
public:
    enum class Reason {
        UnreadableSource,
        UnsupportedFormat,
        DamagedDocument,
        EncryptedWithoutPassword,
        WrongPassword,
        UnsupportedEncryption,
        CannotWriteDestination,
        Other,
    };

    static ConverterError unreadableSource(const std::string &path, int error);
    static ConverterError unsupportedFormat(const std::string &path);
    static ConverterError damagedDocument(const std::string &path);
    static ConverterError encryptedWithoutPassword(const std::string &path);
    static ConverterError wrongPassword(const std::string &path);
    static ConverterError unsupportedEncryption(const std::string &path);
    static ConverterError cannotWriteDestination(const std::string &path, int error);
    // Any other failure, in the words given.
    static ConverterError failed(const std::string &message);

    Reason reason() const { return why; }

private:
    ConverterError(Reason reason, const std::string &message);

    Reason why;
};
