#pragma once

#include <stdexcept>
#include <string>

// Why a conversion stopped. Each failure is reported as exactly one line on stderr, so the
// message is complete on its own and names the file concerned where there is one.
class ConversionError : public std::runtime_error {
public:
    enum class Reason {
        UnreadableSource,
        UnsupportedFormat,
        DamagedDocument,
        EncryptedWithoutPassword,
        WrongPassword,
        UnsupportedEncryption,
        CannotWriteDestination,
    };

    static ConversionError unreadableSource(const std::string &path, int error);
    static ConversionError unsupportedFormat(const std::string &path);
    static ConversionError damagedDocument(const std::string &path);
    static ConversionError encryptedWithoutPassword(const std::string &path);
    static ConversionError wrongPassword(const std::string &path);
    static ConversionError unsupportedEncryption(const std::string &path);
    static ConversionError cannotWriteDestination(const std::string &path, int error);

    Reason reason() const { return why; }

private:
    ConversionError(Reason reason, const std::string &message);

    Reason why;
};
