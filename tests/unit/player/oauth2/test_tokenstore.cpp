#include "fulldisk.h"
#include "logcapture.h"
#include "printers.h"
#include "tokenstore.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using player::TokenStore;

namespace {

class TokenStoreTest : public ::testing::Test
{
protected:
    QTemporaryDir folder;
    QString name = folder.filePath(QStringLiteral("tokens.json"));
    const QString service = QStringLiteral("amazonMusic");
    const QString other = QStringLiteral("other");
    QString error;

    static QString text(const char* ascii) { return QString::fromLatin1(ascii); }
    QByteArray read(const QString& file) const
    {
        QFile opened(file);
        return opened.open(QIODevice::ReadOnly) ? opened.readAll() : QByteArray();
    }
    void write(const QByteArray& bytes)
    {
        QFile opened(name);
        ASSERT_TRUE(opened.open(QIODevice::WriteOnly));
        opened.write(bytes);
    }
    mode_t mode() const
    {
        struct stat status = {};
        stat(QFile::encodeName(name).constData(), &status);
        return status.st_mode & 0777;
    }
};

/// A token of a letter and a number, as the server hands them out one after the other.
QString tokenNumber(int number)
{
    return QStringLiteral("refresh-") + QString::number(number);
}

[[noreturn]] void rotateForEver(const QString& name, int first, int pipe)
{
    TokenStore store(name);
    QString error;
    for (int number = first;; ++number) {
        // The parent counts tokens as handed out from here on.
        if (write(pipe, &number, sizeof number) != sizeof number
            || !store.save(QStringLiteral("amazonMusic"), tokenNumber(number), &error))
            _exit(1);
    }
}

} // namespace

TEST_F(TokenStoreTest, KeepsTokensByService)
{
    {
        TokenStore store(name);
        EXPECT_TRUE(store.complaint().isEmpty());
        EXPECT_TRUE(store.save(service, text("refresh-1"), &error));
        EXPECT_TRUE(store.save(other, text("refresh-2"), &error));
    }
    const TokenStore store(name);
    EXPECT_EQ(store.refreshToken(service), text("refresh-1"));
    EXPECT_EQ(store.refreshToken(other), text("refresh-2"));
    EXPECT_EQ(store.refreshToken(text("third")), QString());
}

TEST_F(TokenStoreTest, RemovedTokenIsNowhereOnTheDisk)
{
    TokenStore store(name);
    EXPECT_TRUE(store.save(service, text("refresh-1"), &error));
    EXPECT_TRUE(store.save(other, text("refresh-2"), &error));
    EXPECT_TRUE(store.save(service, QString(), &error));
    EXPECT_FALSE(read(name).contains("refresh-1"));
    EXPECT_FALSE(read(name + text(".bak")).contains("refresh-1"));
    EXPECT_EQ(TokenStore(name).refreshToken(other), text("refresh-2"));
    EXPECT_TRUE(store.save(other, QString(), &error));
    EXPECT_FALSE(QFile::exists(name));
    EXPECT_FALSE(QFile::exists(name + text(".bak")));
}

TEST_F(TokenStoreTest, FileIsForItsOwnerAlone)
{
    const mode_t before = umask(0);
    TokenStore store(name);
    EXPECT_TRUE(store.save(service, text("refresh-1"), &error));
    umask(before);
    EXPECT_EQ(mode(), 0600u);
}

TEST_F(TokenStoreTest, FileThatOthersCanReadIsMendedAndLogged)
{
    EXPECT_TRUE(TokenStore(name).save(service, text("refresh-1"), &error));
    ASSERT_EQ(chmod(QFile::encodeName(name).constData(), 0644), 0);
    LogCapture log("OAuth2");
    const TokenStore store(name);
    EXPECT_EQ(mode(), 0600u);
    EXPECT_EQ(store.refreshToken(service), text("refresh-1"));
    EXPECT_EQ(log.texts(log4cplus::WARN_LOG_LEVEL),
        QStringList{ text("Others could read %1; its mode is now 0600").arg(name) });
}

TEST_F(TokenStoreTest, GoodModeIsNotMentioned)
{
    EXPECT_TRUE(TokenStore(name).save(service, text("refresh-1"), &error));
    LogCapture log("OAuth2");
    const TokenStore store(name);
    EXPECT_TRUE(log.texts(log4cplus::WARN_LOG_LEVEL).isEmpty());
}

TEST_F(TokenStoreTest, FileCutAtAnyByteIsReadWholeOrSetAside)
{
    EXPECT_TRUE(TokenStore(name).save(service, text("refresh-1"), &error));
    const QByteArray whole = read(name);
    LogCapture log("OAuth2");
    for (int size = 0; size < whole.size() - 1; ++size) {
        write(whole.left(size));
        const TokenStore store(name);
        EXPECT_EQ(store.refreshToken(service), QString()) << size;
        EXPECT_FALSE(store.complaint().isEmpty()) << size;
        EXPECT_EQ(read(name + text(".bad")), whole.left(size));
        EXPECT_FALSE(QFile::exists(name));
    }
}

TEST_F(TokenStoreTest, FileWithAnyBitFlippedIsReadOrSetAside)
{
    EXPECT_TRUE(TokenStore(name).save(service, text("refresh-1"), &error));
    const QByteArray whole = read(name);
    LogCapture log("OAuth2");
    for (int bit = 0; bit < 8 * whole.size(); ++bit) {
        QByteArray flipped = whole;
        flipped[bit / 8] = char(flipped.at(bit / 8) ^ (1 << bit % 8));
        write(flipped);
        const TokenStore store(name);
        EXPECT_EQ(store.complaint().isEmpty(), QFile::exists(name)) << bit;
    }
}

TEST_F(TokenStoreTest, OddFilesAreSetAside)
{
    LogCapture log("OAuth2");
    for (const QByteArray odd :
        { "[]", "null", "{}", "{\"version\":2,\"services\":{}}", "{\"version\":1,\"services\":[]}",
            "{\"version\":1,\"services\":{\"amazonMusic\":{\"refreshToken\":\"a\\nb\"}}}",
            "{\"version\":1,\"services\":{\"amazonMusic\":\"token\"}}" }) {
        write(odd);
        const TokenStore store(name);
        EXPECT_FALSE(store.complaint().isEmpty()) << odd.toStdString();
        EXPECT_EQ(read(name + text(".bad")), odd);
    }
}

TEST_F(TokenStoreTest, FailureToSaveKeepsTheFileAndTheMemory)
{
    TokenStore store(name);
    EXPECT_TRUE(store.save(service, text("refresh-1"), &error));
    {
        const FullDisk disk(10);
        EXPECT_FALSE(store.save(service, text("refresh-2"), &error));
        EXPECT_FALSE(error.isEmpty());
        EXPECT_EQ(store.refreshToken(service), text("refresh-1"));
    }
    EXPECT_EQ(TokenStore(name).refreshToken(service), text("refresh-1"));
    EXPECT_TRUE(store.save(service, text("refresh-2"), &error));
    EXPECT_EQ(TokenStore(name).refreshToken(service), text("refresh-2"));
}

TEST_F(TokenStoreTest, KillBetweenAnswerAndSaveLeavesTheOldOrTheNewToken)
{
    // In memory, where nothing waits for a disk: who dies there dies in the midst of the work.
    const QTemporaryDir memory(text("/dev/shm/tavu-XXXXXX"));
    ASSERT_TRUE(memory.isValid());
    name = memory.filePath(text("tokens.json"));
    QString before = tokenNumber(0);
    EXPECT_TRUE(TokenStore(name).save(service, before, &error));
    for (int round = 1; round <= 1000; ++round) {
        const int first = 100000 * round;
        int ends[2];
        ASSERT_EQ(pipe(ends), 0);
        const pid_t child = fork();
        if (child == 0)
            rotateForEver(name, first, ends[1]);
        close(ends[1]);
        int number = 0;
        for (int answers = 0; answers <= round % 3; ++answers)
            ASSERT_EQ(::read(ends[0], &number, sizeof number), ssize_t(sizeof number));
        kill(child, SIGKILL);
        int status = 0;
        waitpid(child, &status, 0);
        ASSERT_TRUE(WIFSIGNALED(status));
        for (int later = 0; ::read(ends[0], &later, sizeof later) == ssize_t(sizeof later);)
            number = later;
        close(ends[0]);
        const TokenStore store(name);
        ASSERT_TRUE(store.complaint().isEmpty());
        const QString kept = store.refreshToken(service);
        const QString old = number == first ? before : tokenNumber(number - 1);
        ASSERT_TRUE(kept == old || kept == tokenNumber(number)) << kept.toStdString();
        before = kept;
    }
}
