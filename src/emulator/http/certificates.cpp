#include "certificates.h"

#include <openssl/bn.h>
#include <openssl/ec.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rand.h>
#include <openssl/x509v3.h>

#include <QHostAddress>

#include <memory>

namespace emulator {

namespace {

struct Free
{
    void operator()(X509* certificate) const { X509_free(certificate); }
    void operator()(EVP_PKEY* key) const { EVP_PKEY_free(key); }
    void operator()(EVP_PKEY_CTX* context) const { EVP_PKEY_CTX_free(context); }
    void operator()(BIO* bio) const { BIO_free(bio); }
    void operator()(X509_EXTENSION* extension) const { X509_EXTENSION_free(extension); }
    void operator()(BIGNUM* number) const { BN_free(number); }
};
template <typename T>
using Owned = std::unique_ptr<T, Free>;

Owned<BIO> memory(const QByteArray& bytes)
{
    return Owned<BIO>(BIO_new_mem_buf(bytes.constData(), bytes.size()));
}

QByteArray contents(BIO* bio)
{
    char* data = nullptr;
    const long size = BIO_get_mem_data(bio, &data);
    return QByteArray(data, static_cast<int>(size));
}

Identity toPem(X509* certificate, EVP_PKEY* key)
{
    const Owned<BIO> certificatePem(BIO_new(BIO_s_mem()));
    const Owned<BIO> keyPem(BIO_new(BIO_s_mem()));
    if (PEM_write_bio_X509(certificatePem.get(), certificate) != 1
        || PEM_write_bio_PrivateKey(keyPem.get(), key, nullptr, nullptr, 0, nullptr, nullptr) != 1)
        return {};
    return { contents(certificatePem.get()), contents(keyPem.get()) };
}

Owned<X509> readCertificate(const QByteArray& pem)
{
    return Owned<X509>(PEM_read_bio_X509(memory(pem).get(), nullptr, nullptr, nullptr));
}

Owned<EVP_PKEY> readKey(const QByteArray& pem)
{
    return Owned<EVP_PKEY>(PEM_read_bio_PrivateKey(memory(pem).get(), nullptr, nullptr, nullptr));
}

void addExtension(X509* certificate, X509* issuer, int nid, const QByteArray& value)
{
    X509V3_CTX context;
    X509V3_set_ctx_nodb(&context);
    X509V3_set_ctx(&context, issuer, certificate, nullptr, nullptr, 0);
    const Owned<X509_EXTENSION> extension(
        X509V3_EXT_conf_nid(nullptr, &context, nid, value.constData()));
    if (extension)
        X509_add_ext(certificate, extension.get(), -1);
}

void setSerial(X509* certificate)
{
    const Owned<BIGNUM> serial(BN_new());
    BN_rand(serial.get(), 120, BN_RAND_TOP_ONE, BN_RAND_BOTTOM_ANY);
    BN_to_ASN1_INTEGER(serial.get(), X509_get_serialNumber(certificate));
}

void setName(X509_NAME* name, const QByteArray& commonName)
{
    X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_UTF8,
        reinterpret_cast<const unsigned char*>(commonName.constData()), -1, -1, 0);
}

Owned<X509> newCertificate(EVP_PKEY* key, const QByteArray& commonName, const Validity& validity)
{
    Owned<X509> certificate(X509_new());
    X509_set_version(certificate.get(), 2);
    setSerial(certificate.get());
    X509_gmtime_adj(X509_getm_notBefore(certificate.get()), validity.from);
    X509_gmtime_adj(X509_getm_notAfter(certificate.get()), validity.to);
    X509_set_pubkey(certificate.get(), key);
    setName(X509_get_subject_name(certificate.get()), commonName);
    return certificate;
}

EVP_PKEY* newKey()
{
    const Owned<EVP_PKEY_CTX> context(EVP_PKEY_CTX_new_id(EVP_PKEY_EC, nullptr));
    EVP_PKEY* key = nullptr;
    if (!context || EVP_PKEY_keygen_init(context.get()) != 1
        || EVP_PKEY_CTX_set_ec_paramgen_curve_nid(context.get(), NID_X9_62_prime256v1) != 1
        || EVP_PKEY_keygen(context.get(), &key) != 1)
        return nullptr;
    return key;
}

QByteArray alternativeNames(const QStringList& names)
{
    QList<QByteArray> parts;
    for (const QString& name : names) {
        const bool address = !QHostAddress(name).isNull();
        parts += (address ? "IP:" : "DNS:") + name.toUtf8();
    }
    return parts.join(',');
}

} // namespace

Identity makeAuthority()
{
    const Owned<EVP_PKEY> key(newKey());
    if (!key)
        return {};
    const Owned<X509> certificate =
        newCertificate(key.get(), "Amazon Music Emulator throw-away CA", Validity());
    X509_set_issuer_name(certificate.get(), X509_get_subject_name(certificate.get()));
    addExtension(certificate.get(), certificate.get(), NID_basic_constraints, "critical,CA:TRUE");
    addExtension(
        certificate.get(), certificate.get(), NID_key_usage, "critical,keyCertSign,cRLSign");
    addExtension(certificate.get(), certificate.get(), NID_subject_key_identifier, "hash");
    if (X509_sign(certificate.get(), key.get(), EVP_sha256()) == 0)
        return {};
    return toPem(certificate.get(), key.get());
}

Identity makeServerIdentity(
    const Identity& authority, const QStringList& names, const Validity& validity)
{
    const Owned<X509> issuer = readCertificate(authority.certificate);
    const Owned<EVP_PKEY> issuerKey = readKey(authority.key);
    const Owned<EVP_PKEY> key(newKey());
    if (!issuer || !issuerKey || !key || names.isEmpty())
        return {};
    const Owned<X509> certificate =
        newCertificate(key.get(), names.first().left(64).toUtf8(), validity);
    X509_set_issuer_name(certificate.get(), X509_get_subject_name(issuer.get()));
    addExtension(certificate.get(), issuer.get(), NID_basic_constraints, "critical,CA:FALSE");
    addExtension(certificate.get(), issuer.get(), NID_key_usage, "critical,digitalSignature");
    addExtension(certificate.get(), issuer.get(), NID_ext_key_usage, "serverAuth");
    addExtension(certificate.get(), issuer.get(), NID_authority_key_identifier, "keyid");
    addExtension(certificate.get(), issuer.get(), NID_subject_alt_name, alternativeNames(names));
    if (X509_sign(certificate.get(), issuerKey.get(), EVP_sha256()) == 0)
        return {};
    return toPem(certificate.get(), key.get());
}

bool isUsable(const Identity& identity)
{
    const Owned<X509> certificate = readCertificate(identity.certificate);
    const Owned<EVP_PKEY> key = readKey(identity.key);
    if (!certificate || !key || X509_check_private_key(certificate.get(), key.get()) != 1)
        return false;
    time_t tomorrow = time(nullptr) + 24L * 3600;
    return X509_cmp_time(X509_get0_notAfter(certificate.get()), &tomorrow) > 0;
}

} // namespace emulator
