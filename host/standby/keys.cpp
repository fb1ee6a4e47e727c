/* Authority, certificates and keys of a pair of devices. */

#include <uvelhost/standby_link.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rand.h>
#include <openssl/x509v3.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

template <auto Function>
struct FreeWith {
    template <typename T>
    void operator()(T *object) const {
        Function(object);
    }
};
using Key = std::unique_ptr<EVP_PKEY, FreeWith<EVP_PKEY_free>>;
using Certificate = std::unique_ptr<X509, FreeWith<X509_free>>;

struct Failure {
    std::string text;
};

void Need(bool good, const char *what) {
    if (good)
        return;
    const char *reason = ERR_reason_error_string(ERR_peek_last_error());
    std::string text = std::string("cannot make ") + what + ": " + (reason != nullptr ? reason : "unknown error");
    ERR_clear_error();
    throw Failure{text};
}

/* What a name may be: it becomes a file's name and is looked for in certificates letter by letter. */
bool IsName(const char *name) {
    if (name == nullptr)
        return false;
    const std::size_t length = std::strlen(name);
    return length > 0 && length <= 63 && name[0] != '.' && name[0] != '-' &&
           std::strspn(name, "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789.-") == length;
}

void AddExtension(X509 *certificate, X509V3_CTX &context, int nid, const char *value) {
    X509_EXTENSION *extension = X509V3_EXT_conf_nid(nullptr, &context, nid, value);
    const bool added = extension != nullptr && X509_add_ext(certificate, extension, -1) == 1;
    X509_EXTENSION_free(extension);
    Need(added, "a certificate");
}

Key MakeKey() {
    Key key(EVP_EC_gen("P-256"));
    Need(key != nullptr, "a key");
    return key;
}

/* A certificate for `key` in the name `name`, signed by the authority; an authority signs itself. */
Certificate MakeCertificate(EVP_PKEY *key, const std::string &name, uint32_t days, X509 *authority,
                            EVP_PKEY *authority_key) {
    Certificate certificate(X509_new());
    Need(certificate != nullptr, "a certificate");
    X509 *made = certificate.get();
    uint64_t serial = 0;
    Need(RAND_bytes(reinterpret_cast<unsigned char *>(&serial), sizeof serial) == 1, "a serial number");
    X509_NAME *subject = X509_get_subject_name(made);
    const bool filled =
        X509_set_version(made, X509_VERSION_3) == 1 &&
        ASN1_INTEGER_set_uint64(X509_get_serialNumber(made), serial >> 1 | 1) == 1 &&
        X509_gmtime_adj(X509_getm_notBefore(made), -3600) != nullptr && /* the peer's clock may be behind */
        X509_time_adj_ex(X509_getm_notAfter(made), static_cast<int>(days), 0, nullptr) != nullptr &&
        X509_NAME_add_entry_by_txt(subject, "CN", MBSTRING_UTF8, reinterpret_cast<const unsigned char *>(name.c_str()),
                                   -1, -1, 0) == 1 &&
        X509_set_issuer_name(made, authority == nullptr ? subject : X509_get_subject_name(authority)) == 1 &&
        X509_set_pubkey(made, key) == 1;
    Need(filled, "a certificate");

    X509V3_CTX context;
    X509V3_set_ctx_nodb(&context);
    X509V3_set_ctx(&context, authority == nullptr ? made : authority, made, nullptr, nullptr, 0);
    AddExtension(made, context, NID_subject_key_identifier, "hash");
    if (authority == nullptr) {
        AddExtension(made, context, NID_basic_constraints, "critical,CA:TRUE,pathlen:0");
        AddExtension(made, context, NID_key_usage, "critical,keyCertSign");
    } else {
        AddExtension(made, context, NID_authority_key_identifier, "keyid:always");
        AddExtension(made, context, NID_basic_constraints, "critical,CA:FALSE");
        AddExtension(made, context, NID_key_usage, "critical,digitalSignature");
        AddExtension(made, context, NID_ext_key_usage, "serverAuth,clientAuth");
        AddExtension(made, context, NID_subject_alt_name, ("DNS:" + name).c_str());
    }
    Need(X509_sign(made, authority_key, EVP_sha256()) > 0, "a certificate");
    return certificate;
}

/* Files that were made; gone again unless all of them are kept: what is there would be in the way of the next attempt. */
class MadeFiles {
  public:
    MadeFiles() = default;
    ~MadeFiles() {
        for (const std::string &path : paths_)
            (void)unlink(path.c_str());
    }
    MadeFiles(const MadeFiles &) = delete;
    MadeFiles &operator=(const MadeFiles &) = delete;

    /* Opens a new file for writing. */
    int Make(const std::string &path, mode_t mode) {
        paths_.push_back(path);
        const int descriptor = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
        if (descriptor < 0) {
            const int reason = errno;
            paths_.pop_back(); /* whose it is, is not known */
            throw Failure{path + ": " + std::strerror(reason)};
        }
        return descriptor;
    }
    void Keep() { paths_.clear(); }

  private:
    std::vector<std::string> paths_;
};

/* Writes a new file; nobody may read a key on its way there. */
template <typename Write>
void WriteFile(MadeFiles &files, const std::string &path, mode_t mode, Write write) {
    const int descriptor = files.Make(path, mode);
    FILE *file = fdopen(descriptor, "w");
    const bool written = file != nullptr && write(file) == 1;
    const bool closed = file == nullptr ? (close(descriptor), false) : std::fclose(file) == 0;
    if (!written || !closed)
        throw Failure{path + ": cannot be written"};
}

void WriteDevice(MadeFiles &files, const std::string &folder, const char *name, uint32_t days, X509 *authority,
                 EVP_PKEY *authority_key) {
    const Key key = MakeKey();
    const Certificate certificate = MakeCertificate(key.get(), name, days, authority, authority_key);
    WriteFile(files, folder + name + ".key", 0600, [&](FILE *file) {
        return PEM_write_PKCS8PrivateKey(file, key.get(), nullptr, nullptr, 0, nullptr, nullptr);
    });
    WriteFile(files, folder + name + ".pem", 0644, [&](FILE *file) { return PEM_write_X509(file, certificate.get()); });
}

void MakeAll(const char *folder, const char *first, const char *second, uint32_t days) {
    if (folder == nullptr || folder[0] == '\0')
        throw Failure{"no folder"};
    if (!IsName(first) || !IsName(second))
        throw Failure{"a name of a device is made of 1 to 63 letters, digits, dots and hyphens"};
    if (strcasecmp(first, second) == 0 || strcasecmp(first, "authority") == 0 || strcasecmp(second, "authority") == 0)
        throw Failure{"the devices need different names, and none is \"authority\""};
    if (days == 0 || days > 36500)
        throw Failure{"the certificates must be valid for 1 to 36500 days"};
    if (mkdir(folder, 0700) != 0 && errno != EEXIST)
        throw Failure{std::string(folder) + ": " + std::strerror(errno)};
    const std::string prefix = std::string(folder) + "/";
    for (const std::string &file :
         {std::string("authority.pem"), std::string(first) + ".key", std::string(first) + ".pem",
          std::string(second) + ".key", std::string(second) + ".pem"}) {
        if (access((prefix + file).c_str(), F_OK) == 0)
            throw Failure{prefix + file + " is there already"};
    }
    const Key key = MakeKey();
    const std::string name = std::string("hot standby of ") + first + " and " + second;
    const Certificate authority = MakeCertificate(key.get(), name.substr(0, 64), days, nullptr, key.get());
    MadeFiles files;
    WriteDevice(files, prefix, first, days, authority.get(), key.get());
    WriteDevice(files, prefix, second, days, authority.get(), key.get());
    WriteFile(files, prefix + "authority.pem", 0644, [&](FILE *file) { return PEM_write_X509(file, authority.get()); });
    files.Keep();
}

} // namespace

uint32_t YSB_Link_MakeKeys(const char *pszFolder, const char *pszFirst, const char *pszSecond, uint32_t ulDays,
                           char *pszError, uint32_t ulErrorSize) {
    try {
        MakeAll(pszFolder, pszFirst, pszSecond, ulDays);
        return UVELHOST_OK;
    } catch (const Failure &failure) {
        if (pszError != nullptr && ulErrorSize != 0)
            std::snprintf(pszError, ulErrorSize, "%s", failure.text.c_str());
    } catch (const std::bad_alloc &) {
        if (pszError != nullptr && ulErrorSize != 0)
            std::snprintf(pszError, ulErrorSize, "memory is short");
    }
    return 1;
}
