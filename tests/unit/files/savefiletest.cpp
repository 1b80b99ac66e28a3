#include "savefile.h"

#include "fulldisk.h"
#include "printers.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <csignal>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using files::privateFile;
using files::publicFile;
using files::removeSavedFile;
using files::replaceFile;
using files::saveFile;

namespace {

QByteArray contents(const QString& name)
{
    QFile file(name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(no file)");
}

class SaveFile : public ::testing::Test
{
protected:
    QTemporaryDir folder;
    QString name = folder.filePath(QStringLiteral("tokens.json"));
    QString backup = name + QStringLiteral(".bak");

    mode_t mode() const
    {
        struct stat status = {};
        stat(QFile::encodeName(name).constData(), &status);
        return status.st_mode & 0777;
    }
    QStringList files() const
    {
        return QDir(folder.path()).entryList(QDir::Files | QDir::Hidden, QDir::Name);
    }
};

/// Saves states of one repeated letter for ever, and tells each one on the pipe.
[[noreturn]] void saveForEver(const QString& name, int pipe)
{
    for (char state = 'b';; state = state == 'z' ? 'b' : char(state + 1)) {
        if (!saveFile(name, QByteArray(20000, state), privateFile))
            _exit(1);
        if (write(pipe, &state, 1) != 1)
            _exit(1);
    }
}

} // namespace

TEST_F(SaveFile, WritesANewFileForItsOwnerAlone)
{
    const mode_t before = umask(0);
    EXPECT_TRUE(saveFile(name, "secret", privateFile));
    umask(before);
    EXPECT_EQ(contents(name), "secret");
    EXPECT_EQ(mode(), 0600u);
    EXPECT_EQ(files(), QStringList{ QStringLiteral("tokens.json") });
}

TEST_F(SaveFile, MendsTheModeOfAFileThatOthersCanRead)
{
    EXPECT_TRUE(saveFile(name, "old", privateFile));
    QFile::setPermissions(name, privateFile | QFile::ReadOther | QFile::ReadGroup);
    EXPECT_TRUE(saveFile(name, "new", privateFile));
    EXPECT_EQ(mode(), 0600u);
}

TEST_F(SaveFile, KeepsThePreviousContents)
{
    EXPECT_TRUE(saveFile(name, "first", privateFile));
    EXPECT_TRUE(saveFile(name, "second", privateFile));
    EXPECT_TRUE(saveFile(name, "third", privateFile));
    EXPECT_EQ(contents(name), "third");
    EXPECT_EQ(contents(backup), "second");
}

TEST_F(SaveFile, FullDiskLeavesTheOldContentsAndSaysWhy)
{
    EXPECT_TRUE(saveFile(name, "old", privateFile));
    QString error;
    {
        const FullDisk disk(1000);
        EXPECT_FALSE(saveFile(name, QByteArray(3000, 'x'), privateFile, &error));
    }
    EXPECT_FALSE(error.isEmpty());
    EXPECT_EQ(contents(name), "old");
    const QStringList names{ QStringLiteral("tokens.json"), QStringLiteral("tokens.json.bak") };
    EXPECT_EQ(files(), names);
}

TEST_F(SaveFile, FullDiskShowsAlsoWhenMostOfTheBytesFit)
{
    EXPECT_TRUE(saveFile(name, "old", privateFile));
    {
        const FullDisk disk(199999);
        EXPECT_FALSE(saveFile(name, QByteArray(200000, 'x'), privateFile));
    }
    EXPECT_EQ(contents(name), "old");
}

TEST_F(SaveFile, MissingFolderIsAnErrorWithAReason)
{
    QString error;
    EXPECT_FALSE(saveFile(QStringLiteral("/nowhere/tokens.json"), "x", privateFile, &error));
    EXPECT_EQ(error, QStringLiteral("/nowhere/tokens.json: No such file or directory"));
}

TEST_F(SaveFile, KillAtAnyInstantLeavesOneWholeState)
{
    EXPECT_TRUE(saveFile(name, QByteArray(20000, 'a'), privateFile));
    for (int round = 0; round < 50; ++round) {
        int ends[2];
        ASSERT_EQ(pipe(ends), 0);
        const pid_t child = fork();
        if (child == 0)
            saveForEver(name, ends[1]);
        close(ends[1]);
        char state = 0;
        for (int saved = 0; saved < round % 4; ++saved)
            ASSERT_EQ(read(ends[0], &state, 1), 1);
        kill(child, SIGKILL);
        int status = 0;
        waitpid(child, &status, 0);
        ASSERT_TRUE(WIFSIGNALED(status));
        close(ends[0]);
        for (const QByteArray& kept : { contents(name), contents(backup) }) {
            const bool whole = kept == QByteArray(20000, kept.at(0));
            ASSERT_TRUE(whole || kept == "(no file)");
        }
        EXPECT_NE(contents(name), "(no file)");
    }
}

TEST_F(SaveFile, ReplacingKeepsNoPreviousContents)
{
    EXPECT_TRUE(replaceFile(name, "first", publicFile));
    EXPECT_TRUE(replaceFile(name, "second", publicFile));
    EXPECT_EQ(contents(name), "second");
    EXPECT_EQ(mode(), 0644u);
    EXPECT_EQ(files(), QStringList{ QStringLiteral("tokens.json") });
}

TEST_F(SaveFile, RemovalTakesThePreviousContentsAlong)
{
    EXPECT_TRUE(saveFile(name, "first", privateFile));
    EXPECT_TRUE(saveFile(name, "second", privateFile));
    EXPECT_TRUE(removeSavedFile(name));
    EXPECT_EQ(files(), QStringList());
    EXPECT_TRUE(removeSavedFile(name));
}
