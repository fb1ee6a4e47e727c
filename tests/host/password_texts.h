/* Cipher texts of passwords, made and opened by hand from the documented layout, and a folder for their key. */
#ifndef UVEL_TESTS_HOST_PASSWORD_TEXTS_H
#define UVEL_TESTS_HOST_PASSWORD_TEXTS_H

#include <array>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <openssl/evp.h>
#include <openssl/hmac.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace password_texts {

using Bytes = std::basic_string<unsigned char>;
using Block = std::array<uint8_t, 32>;

inline Bytes ToBytes(const std::string &text) {
    return {text.begin(), text.end()};
}

/* A folder of its own for the key file, named to the host by the environment. */
class KeyFolder {
  public:
    KeyFolder() {
        const char *before = getenv("UVELHOST_KEY_FILE");
        before_ = before == nullptr ? "" : before;
        char name[] = "/tmp/uvelhost-key.XXXXXX";
        folder_ = mkdtemp(name);
        Use("password.key");
    }
    ~KeyFolder() {
        setenv("UVELHOST_KEY_FILE", before_.c_str(), 1);
        std::error_code ignored;
        std::filesystem::remove_all(folder_, ignored);
    }
    KeyFolder(const KeyFolder &) = delete;
    KeyFolder &operator=(const KeyFolder &) = delete;

    /* From now on the key file is this one of the folder. */
    void Use(const std::string &name) {
        file_ = folder_ / name;
        setenv("UVELHOST_KEY_FILE", file_.c_str(), 1);
    }

    const std::filesystem::path &Folder() const { return folder_; }
    const std::filesystem::path &File() const { return file_; }

    void Put(const Bytes &key, mode_t mode = 0600) const {
        std::filesystem::remove(file_);
        std::ofstream(file_, std::ios::binary).write(reinterpret_cast<const char *>(key.data()), std::ssize(key));
        ASSERT_EQ(0, chmod(file_.c_str(), mode));
    }

    Bytes Key() const {
        std::ifstream file(file_, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    }

    std::size_t FilesInside() const {
        return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(folder_), {}));
    }

  private:
    std::string before_;
    std::filesystem::path folder_;
    std::filesystem::path file_;
};

inline Bytes Hmac(const Bytes &key, const Bytes &message) {
    Bytes mac(32, 0);
    unsigned size = 0;
    HMAC(EVP_sha256(), key.data(), static_cast<int>(key.size()), message.data(), message.size(), mac.data(), &size);
    return mac;
}

/* HKDF-SHA-256 without salt, by its definition. */
inline Bytes Hkdf(const Bytes &secret, const std::string &info, std::size_t size) {
    const Bytes root = Hmac(Bytes(32, 0), secret);
    Bytes result;
    Bytes previous;
    for (unsigned char counter = 1; result.size() < size; ++counter)
        result += previous = Hmac(root, previous + ToBytes(info) + counter);
    return result.substr(0, size);
}

inline std::string Hex(const Bytes &bytes) {
    std::string text;
    for (unsigned char byte : bytes) {
        text += "0123456789ABCDEF"[byte / 16];
        text += "0123456789ABCDEF"[byte % 16];
    }
    return text;
}

inline std::string Base64Url(const Bytes &bytes) {
    std::string text(bytes.size() / 3 * 4 + 5, '\0');
    text.resize(static_cast<std::size_t>(
        EVP_EncodeBlock(reinterpret_cast<unsigned char *>(text.data()), bytes.data(), static_cast<int>(bytes.size()))));
    text.erase(std::min(text.find('='), text.size()));
    for (char &c : text)
        c = c == '+' ? '-' : c == '/' ? '_' : c;
    return text;
}

/* Format 08: AES-256-CBC and HMAC-SHA-256. */
inline std::string OldText(const std::string &clear, const Bytes &device_key, const Block &block) {
    const Bytes key = Hkdf(device_key, "uvelhost password 08", 64);
    Bytes iv(16, 0x5A);
    Bytes box(clear.size() + 16, 0);
    int first = 0;
    int last = 0;
    EVP_CIPHER_CTX *context = EVP_CIPHER_CTX_new();
    EVP_EncryptInit_ex(context, EVP_aes_256_cbc(), nullptr, key.data(), iv.data());
    EVP_EncryptUpdate(context, box.data(), &first, ToBytes(clear).data(), static_cast<int>(clear.size()));
    EVP_EncryptFinal_ex(context, box.data() + first, &last);
    EVP_CIPHER_CTX_free(context);
    box.resize(static_cast<std::size_t>(first + last));

    const Bytes mac = Hmac(key.substr(32), ToBytes("$uvp08$") + Bytes(block.begin(), block.end()) + iv + box);
    return "$uvp08$" + Hex(iv + box + mac);
}

/* Format 10 or 11 over the given padded clear text. */
inline std::string SealedText(int format, const Bytes &padded, const Bytes &device_key, const Block &block) {
    const std::string number = std::to_string(format);
    const std::string prefix = "$uvp" + number + "$";
    const Bytes key = Hkdf(device_key, "uvelhost password " + number, 32);
    const Bytes label = ToBytes(prefix) + Bytes(block.begin(), block.end());
    const Bytes nonce(12, 0xC3);
    Bytes box(padded.size(), 0);
    Bytes tag(16, 0);
    int written = 0;
    EVP_CIPHER_CTX *context = EVP_CIPHER_CTX_new();
    EVP_EncryptInit_ex(context, format == 11 ? EVP_chacha20_poly1305() : EVP_aes_256_gcm(), nullptr, key.data(),
                       nonce.data());
    EVP_EncryptUpdate(context, nullptr, &written, label.data(), static_cast<int>(label.size()));
    EVP_EncryptUpdate(context, box.data(), &written, padded.data(), static_cast<int>(padded.size()));
    EVP_EncryptFinal_ex(context, box.data() + written, &written);
    EVP_CIPHER_CTX_ctrl(context, EVP_CTRL_AEAD_GET_TAG, 16, tag.data());
    EVP_CIPHER_CTX_free(context);
    return prefix + Base64Url(nonce + box + tag);
}

inline std::string SealedText(int format, const std::string &clear, const Bytes &device_key, const Block &block) {
    Bytes padded = ToBytes(clear);
    padded.resize((clear.size() / 16 + 1) * 16, 0);
    return SealedText(format, padded, device_key, block);
}

} // namespace password_texts

#endif
