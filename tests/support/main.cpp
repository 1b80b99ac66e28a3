#include <gtest/gtest.h>

#include <QCoreApplication>

#include <openssl/crypto.h>

// GLib allocates its first table of names when it is loaded and drops it when the table grows, as
// it does wherever GStreamer is used. The stack of that leak ends at the allocating function.
// OpenSSL keeps a queue of errors for each thread; where a thread's end meets the end of the
// process the queue may stay. PulseAudio's client keeps its connection's state where the server
// that it looks for is not there. Their stacks end at the allocating functions too.
extern "C" __attribute__((visibility("default"))) const char*
__lsan_default_suppressions() // NOLINT(bugprone-reserved-identifier)
{
    return "leak:^g_malloc$\n"
           "leak:^CRYPTO_zalloc$\n"
           "leak:^ERR_vset_error$\n"
           "leak:^CRYPTO_strndup$\n"
           "leak:^pa_xmalloc$\n"
           "leak:^pa_xmalloc0$\n";
}

int main(int argc, char** argv)
{
    // A thread may still be ending when the process does; what the library cleaned up then would be
    // freed by both.
    OPENSSL_init_crypto(OPENSSL_INIT_NO_ATEXIT, nullptr);
    ::testing::InitGoogleTest(&argc, argv);
    QCoreApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
