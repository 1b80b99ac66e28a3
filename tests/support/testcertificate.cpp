#include "testcertificate.h"

#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509v3.h>

#include <QtGlobal>

#include <memory>

static const long day = 24 * 60 * 60;

static QByteArray pemText(BIO* bio)
{
    char* data = nullptr;
    const long size = BIO_get_mem_data(bio, &data);
    const QByteArray text(data, int(size));
    BIO_free(bio);
    return text;
}

static void addNames(X509* certificate, const QByteArray& name)
{
    X509_NAME* subject = X509_get_subject_name(certificate);
    X509_NAME_add_entry_by_txt(subject, "CN", MBSTRING_UTF8,
        reinterpret_cast<const unsigned char*>(name.constData()), name.size(), -1, 0);
    X509_set_issuer_name(certificate, subject);
    const QByteArray others = "DNS:" + name + ",IP:127.0.0.1";
    X509_EXTENSION* extension =
        X509V3_EXT_conf_nid(nullptr, nullptr, NID_subject_alt_name, others.constData());
    X509_add_ext(certificate, extension, -1);
    X509_EXTENSION_free(extension);
}

TestCertificate TestCertificate::make(const QByteArray& name)
{
    const std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)> key(
        EVP_EC_gen("P-256"), EVP_PKEY_free);
    const std::unique_ptr<X509, decltype(&X509_free)> certificate(X509_new(), X509_free);
    X509_set_version(certificate.get(), 2);
    ASN1_INTEGER_set(X509_get_serialNumber(certificate.get()), 1);
    X509_gmtime_adj(X509_getm_notBefore(certificate.get()), -day);
    X509_gmtime_adj(X509_getm_notAfter(certificate.get()), day);
    X509_set_pubkey(certificate.get(), key.get());
    addNames(certificate.get(), name);
    const int signature = X509_sign(certificate.get(), key.get(), EVP_sha256());
    Q_ASSERT(signature > 0);
    Q_UNUSED(signature);
    TestCertificate made;
    BIO* bio = BIO_new(BIO_s_mem());
    PEM_write_bio_X509(bio, certificate.get());
    made.certificate = pemText(bio);
    bio = BIO_new(BIO_s_mem());
    PEM_write_bio_PrivateKey(bio, key.get(), nullptr, nullptr, 0, nullptr, nullptr);
    made.key = pemText(bio);
    return made;
}
