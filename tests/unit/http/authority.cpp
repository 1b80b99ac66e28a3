#include "authority.h"

#include <QSslCertificate>
#include <QSslKey>

#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509v3.h>

namespace {

using Key = std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)>;
using Certificate = std::unique_ptr<X509, decltype(&X509_free)>;

constexpr long day = 24 * 60 * 60;

Key makeKey()
{
    return { EVP_EC_gen("P-256"), &EVP_PKEY_free };
}

template <class Write>
QByteArray pem(Write write)
{
    BIO* const memory = BIO_new(BIO_s_mem());
    write(memory);
    char* data = nullptr;
    const long size = BIO_get_mem_data(memory, &data);
    const QByteArray text(data, int(size));
    BIO_free(memory);
    return text;
}

QByteArray pem(X509* certificate)
{
    return pem([&](BIO* out) { PEM_write_bio_X509(out, certificate); });
}

QByteArray pem(EVP_PKEY* key)
{
    return pem([&](BIO* out) {
        PEM_write_bio_PrivateKey(out, key, nullptr, nullptr, 0, nullptr, nullptr);
    });
}

void setName(X509_NAME* field, const QByteArray& name)
{
    X509_NAME_add_entry_by_txt(field, "CN", MBSTRING_UTF8,
        reinterpret_cast<const unsigned char*>(name.constData()), name.size(), -1, 0);
}

void extend(X509* certificate, int nid, const QByteArray& value)
{
    X509_EXTENSION* const extension = X509V3_EXT_conf_nid(nullptr, nullptr, nid, value.constData());
    X509_add_ext(certificate, extension, -1);
    X509_EXTENSION_free(extension);
}

Certificate makeCertificate(EVP_PKEY* key, const QByteArray& name, int daysLeft)
{
    static long serial = 1;
    Certificate made(X509_new(), &X509_free);
    X509_set_version(made.get(), 2);
    ASN1_INTEGER_set(X509_get_serialNumber(made.get()), ++serial);
    X509_gmtime_adj(X509_getm_notBefore(made.get()), -10 * day);
    X509_gmtime_adj(X509_getm_notAfter(made.get()), daysLeft * day);
    X509_set_pubkey(made.get(), key);
    setName(X509_get_subject_name(made.get()), name);
    return made;
}

QByteArray nextName()
{
    static int number = 0;
    return "Throw-away authority " + QByteArray::number(++number);
}

void sign(X509* certificate, EVP_PKEY* key)
{
    const int length = X509_sign(certificate, key, EVP_sha256());
    Q_ASSERT(length > 0);
    Q_UNUSED(length);
}

} // namespace

struct Authority::Private
{
    Key key = makeKey();
    QByteArray name = nextName();
    Certificate certificate = makeCertificate(key.get(), name, 10);
};

Authority::Authority()
    : d(std::make_unique<Private>())
{
    X509* const own = d->certificate.get();
    setName(X509_get_issuer_name(own), d->name);
    extend(own, NID_basic_constraints, "critical,CA:TRUE");
    sign(own, d->key.get());
}

Authority::~Authority() = default;

QByteArray Authority::certificate() const
{
    return pem(d->certificate.get());
}

QSslConfiguration Authority::server(const QByteArray& name, int daysLeft) const
{
    const Key key = makeKey();
    const Certificate made = makeCertificate(key.get(), name, daysLeft);
    setName(X509_get_issuer_name(made.get()), d->name);
    extend(made.get(), NID_subject_alt_name, "DNS:" + name);
    sign(made.get(), d->key.get());
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    configuration.setLocalCertificate(QSslCertificate(pem(made.get())));
    configuration.setPrivateKey(QSslKey(pem(key.get()), QSsl::Ec));
    configuration.setPeerVerifyMode(QSslSocket::VerifyNone);
    return configuration;
}
