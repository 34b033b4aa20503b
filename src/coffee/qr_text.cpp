#include "tnv5/coffee/qr_text.h"

#include "tnv5/coffee/qr_key.h"
#include "tnv5/common/crc8.h"
#include "tnv5/platform/errors.h"

#include <algorithm>
#include <memory>
#include <openssl/crypto.h>
#include <openssl/evp.h>

namespace tnv5::coffee {

namespace {

struct TFree
{
    void operator()(EVP_CIPHER* cipher) const { EVP_CIPHER_free(cipher); }
    void operator()(EVP_CIPHER_CTX* context) const { EVP_CIPHER_CTX_free(context); }
};

template <class Value>
Value checked(Value result)
{
    if (!result) {
        throw platform::Exception(QStringLiteral("AES-128 is not available"));
    }
    return result;
}

/// Looking the cipher up takes longer than enciphering, so it is done once.
const EVP_CIPHER* aes128()
{
    static const std::unique_ptr<EVP_CIPHER, TFree> cipher(
        checked(EVP_CIPHER_fetch(nullptr, "AES-128-ECB", nullptr)));
    return cipher.get();
}

/// A context a call: its key schedule is wiped with it.
TBlock enciphered(const TBlock& block, const TKey& key)
{
    const std::unique_ptr<EVP_CIPHER_CTX, TFree> context(checked(EVP_CIPHER_CTX_new()));
    TBlock cipher{};
    int size = 0;
    checked(EVP_EncryptInit_ex2(context.get(), aes128(), key.data(), nullptr, nullptr) == 1 &&
            EVP_CIPHER_CTX_set_padding(context.get(), 0) == 1 &&
            EVP_EncryptUpdate(context.get(), cipher.data(), &size, block.data(),
                              static_cast<int>(block.size())) == 1 &&
            size == static_cast<int>(cipher.size()));
    return cipher;
}

/// The key's bytes, wiped in the end.
struct TWipedKey
{
    explicit TWipedKey(QStringView keyHex) : Bytes(QrKey(keyHex)) {}
    ~TWipedKey() { OPENSSL_cleanse(Bytes.data(), Bytes.size()); }
    TWipedKey(const TWipedKey&) = delete;
    TWipedKey& operator=(const TWipedKey&) = delete;

    TKey Bytes;
};

QByteArray textOf(const TBlock& cipher)
{
    QByteArray text(1 + 2 * static_cast<qsizetype>(cipher.size()) + 1, Qt::Uninitialized);
    char* at = text.data();
    *at++ = 'O';
    for (const quint8 byte : cipher) {
        const std::array<char, 2> digits = common::HexDigits(byte);
        at = std::copy(digits.begin(), digits.end(), at);
    }
    *at = 'S';
    return text;
}

} // namespace

QByteArray _qrcodestr(int APart1, int APart2, int APart3, int AValue1, int AValue2, const QString& AKeyHex)
{
    const quint32 stamp = UnixStamp(platform::Now());
    const TWipedKey key(AKeyHex);
    return textOf(enciphered(QrBlock(APart1, APart2, APart3, AValue1, AValue2, stamp), key.Bytes));
}

} // namespace tnv5::coffee
