/* An authority that makes what honest ones do not: certificates that are over, or not valid yet. */
#ifndef UVEL_TESTS_STANDBY_AUTHORITY_H
#define UVEL_TESTS_STANDBY_AUTHORITY_H

#include <memory>
#include <openssl/evp.h>
#include <openssl/x509.h>
#include <string>

class Authority {
  public:
    Authority();

    /* Writes authority.pem, for those who trust it. */
    void Write(const std::string &folder) const;
    /* Writes FILE.pem and FILE.key for the device `name`, valid from and until so many hours from now. */
    void WriteDevice(const std::string &folder, const std::string &file, const std::string &name, int from,
                     int until) const;

  private:
    struct Free {
        void operator()(EVP_PKEY *key) const { EVP_PKEY_free(key); }
        void operator()(X509 *certificate) const { X509_free(certificate); }
    };
    using Key = std::unique_ptr<EVP_PKEY, Free>;
    using Certificate = std::unique_ptr<X509, Free>;

    Certificate Make(EVP_PKEY *key, const std::string &name, int from, int until) const;

    Key key_;
    Certificate certificate_;
};

#endif
