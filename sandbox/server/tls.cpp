// TLS over OpenSSL's memory buffers.
#include "sandbox/server/tls.h"

#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/ssl.h>
#include <openssl/x509v3.h>

#include <array>
#include <string>

namespace sandbox::server {
namespace {

[[noreturn]] void fail(const std::string& what) {
    std::array<char, 256> text{};
    ERR_error_string_n(ERR_get_error(), text.data(), text.size());
    ERR_clear_error();
    throw TlsError(what + ": " + text.data());
}

using KeyPtr = std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)>;
using CertificatePtr = std::unique_ptr<X509, decltype(&X509_free)>;

KeyPtr makeKey() {
    // On a curve, because it is made in a millisecond, and a demo chain may be two hundred servers.
    KeyPtr key(EVP_EC_gen("P-256"), EVP_PKEY_free);
    if (!key) fail("cannot make a key");
    return key;
}

CertificatePtr makeCertificate(EVP_PKEY* key) {
    constexpr long kValidSeconds = 10L * 365 * 86400;
    CertificatePtr certificate(X509_new(), X509_free);
    X509* c = certificate.get();
    if (c == nullptr) fail("cannot make a certificate");
    X509_set_version(c, 2);
    ASN1_INTEGER_set(X509_get_serialNumber(c), 1);
    X509_gmtime_adj(X509_getm_notBefore(c), -86400);
    X509_gmtime_adj(X509_getm_notAfter(c), kValidSeconds);
    X509_set_pubkey(c, key);
    X509_NAME* name = X509_get_subject_name(c);
    X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_ASC, reinterpret_cast<const unsigned char*>("localhost"), -1, -1,
                               0);
    X509_set_issuer_name(c, name);
    X509_EXTENSION* names = X509V3_EXT_conf_nid(nullptr, nullptr, NID_subject_alt_name, "DNS:localhost,IP:127.0.0.1");
    if (names == nullptr) fail("cannot name the certificate");
    X509_add_ext(c, names, -1);
    X509_EXTENSION_free(names);
    if (X509_sign(c, key, EVP_sha256()) == 0) fail("cannot sign the certificate");
    return certificate;
}

}  // namespace

TlsContext::TlsContext(const std::filesystem::path& certificate, const std::filesystem::path& key)
    : context_(SSL_CTX_new(TLS_server_method()), SSL_CTX_free) {
    SSL_CTX* context = context_.get();
    if (context == nullptr) fail("cannot start TLS");
    SSL_CTX_set_max_proto_version(context, TLS1_2_VERSION);
    SSL_CTX_set_options(context, SSL_OP_NO_RENEGOTIATION | SSL_OP_NO_TICKET);
    SSL_CTX_set_session_cache_mode(context, SSL_SESS_CACHE_OFF);
    if (certificate.empty()) {
        const KeyPtr made = makeKey();
        const CertificatePtr signedByItself = makeCertificate(made.get());
        if (SSL_CTX_use_certificate(context, signedByItself.get()) != 1 ||
            SSL_CTX_use_PrivateKey(context, made.get()) != 1) {
            fail("cannot use the certificate made");
        }
        return;
    }
    if (SSL_CTX_use_certificate_chain_file(context, certificate.c_str()) != 1) {
        fail("cannot use the certificate " + certificate.string());
    }
    const std::filesystem::path keyFile = key.empty() ? certificate : key;
    if (SSL_CTX_use_PrivateKey_file(context, keyFile.c_str(), SSL_FILETYPE_PEM) != 1) {
        fail("cannot use the key " + keyFile.string());
    }
}

TlsSession::TlsSession(const TlsContext& context) : ssl_(SSL_new(context.get()), SSL_free) {
    BIO* in = BIO_new(BIO_s_mem());
    BIO* out = BIO_new(BIO_s_mem());
    if (!ssl_ || in == nullptr || out == nullptr) fail("cannot start a TLS session");
    SSL_set_bio(ssl_.get(), in, out);
    SSL_set_accept_state(ssl_.get());
}

bool TlsSession::handshake(std::span<const std::uint8_t> received) {
    const std::lock_guard lock(mutex_);
    put(received);
    ERR_clear_error();
    const int result = SSL_do_handshake(ssl_.get());
    if (result == 1) return true;
    if (SSL_get_error(ssl_.get(), result) != SSL_ERROR_WANT_READ) fail("the TLS handshake failed");
    return false;
}

std::vector<std::uint8_t> TlsSession::decrypt(std::span<const std::uint8_t> received) {
    const std::lock_guard lock(mutex_);
    put(received);
    std::vector<std::uint8_t> plain;
    std::array<std::uint8_t, 16384> part{};
    while (true) {
        ERR_clear_error();
        const int count = SSL_read(ssl_.get(), part.data(), static_cast<int>(part.size()));
        if (count > 0) {
            plain.insert(plain.end(), part.begin(), part.begin() + count);
            continue;
        }
        const int error = SSL_get_error(ssl_.get(), count);
        if (error == SSL_ERROR_WANT_READ || error == SSL_ERROR_ZERO_RETURN) return plain;
        fail("the TLS stream is broken");
    }
}

std::vector<std::uint8_t> TlsSession::encrypt(std::span<const std::uint8_t> plain) {
    const std::lock_guard lock(mutex_);
    ERR_clear_error();
    if (!plain.empty() && SSL_write(ssl_.get(), plain.data(), static_cast<int>(plain.size())) <= 0) {
        fail("cannot encrypt");
    }
    return outgoing();
}

std::vector<std::uint8_t> TlsSession::takeOutgoing() {
    const std::lock_guard lock(mutex_);
    return outgoing();
}

void TlsSession::put(std::span<const std::uint8_t> received) {
    if (!received.empty()) BIO_write(SSL_get_rbio(ssl_.get()), received.data(), static_cast<int>(received.size()));
}

std::vector<std::uint8_t> TlsSession::outgoing() {
    BIO* out = SSL_get_wbio(ssl_.get());
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(BIO_pending(out)));
    if (!bytes.empty()) BIO_read(out, bytes.data(), static_cast<int>(bytes.size()));
    return bytes;
}

}  // namespace sandbox::server
