#include "authority.h"

#include <cstdio>
#include <cstdlib>
#include <openssl/pem.h>
#include <openssl/x509v3.h>

static void Need(bool good, const char *what) {
    if (good)
        return;
    std::fprintf(stderr, "authority for tests: %s\n", what);
    std::abort();
}

static void AddExtension(X509 *certificate, X509V3_CTX &context, int nid, const std::string &value) {
    X509_EXTENSION *extension = X509V3_EXT_conf_nid(nullptr, &context, nid, value.c_str());
    Need(extension != nullptr && X509_add_ext(certificate, extension, -1) == 1, "an extension");
    X509_EXTENSION_free(extension);
}

template <typename Write>
static void WriteFile(const std::string &path, Write write) {
    std::FILE *file = std::fopen(path.c_str(), "w");
    Need(file != nullptr && write(file) == 1, path.c_str());
    std::fclose(file);
}

Authority::Authority() : key_(EVP_EC_gen("P-256")) {
    certificate_ = Make(key_.get(), "authority", -1, 24);
}

/* The authority's own comes first and signs itself. */
Authority::Certificate Authority::Make(EVP_PKEY *key, const std::string &name, int from, int until) const {
    constexpr long HOUR = 3600;
    const bool self = certificate_ == nullptr;
    Certificate made(X509_new());
    X509 *certificate = made.get();
    X509_NAME *subject = X509_get_subject_name(certificate);
    Need(X509_set_version(certificate, X509_VERSION_3) == 1 &&
             ASN1_INTEGER_set(X509_get_serialNumber(certificate), self ? 1 : 2) == 1 &&
             X509_gmtime_adj(X509_getm_notBefore(certificate), from * HOUR) != nullptr &&
             X509_gmtime_adj(X509_getm_notAfter(certificate), until * HOUR) != nullptr &&
             X509_NAME_add_entry_by_txt(subject, "CN", MBSTRING_UTF8,
                                        reinterpret_cast<const unsigned char *>(name.c_str()), -1, -1, 0) == 1 &&
             X509_set_issuer_name(certificate, self ? subject : X509_get_subject_name(certificate_.get())) == 1 &&
             X509_set_pubkey(certificate, key) == 1,
         "a certificate");
    X509V3_CTX context;
    X509V3_set_ctx_nodb(&context);
    X509V3_set_ctx(&context, self ? certificate : certificate_.get(), certificate, nullptr, nullptr, 0);
    AddExtension(certificate, context, NID_basic_constraints, self ? "critical,CA:TRUE" : "critical,CA:FALSE");
    if (!self)
        AddExtension(certificate, context, NID_subject_alt_name, "DNS:" + name);
    Need(X509_sign(certificate, key_.get(), EVP_sha256()) > 0, "a signature");
    return made;
}

void Authority::Write(const std::string &folder) const {
    WriteFile(folder + "/authority.pem", [&](std::FILE *file) { return PEM_write_X509(file, certificate_.get()); });
}

void Authority::WriteDevice(const std::string &folder, const std::string &file, const std::string &name, int from,
                            int until) const {
    const Key key(EVP_EC_gen("P-256"));
    const Certificate certificate = Make(key.get(), name, from, until);
    WriteFile(folder + "/" + file + ".pem", [&](std::FILE *out) { return PEM_write_X509(out, certificate.get()); });
    WriteFile(folder + "/" + file + ".key", [&](std::FILE *out) {
        return PEM_write_PrivateKey(out, key.get(), nullptr, nullptr, 0, nullptr, nullptr);
    });
}
