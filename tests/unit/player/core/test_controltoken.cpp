#include "controltoken.h"

#include "fulldisk.h"
#include "printers.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

using player::ControlToken;

namespace {

constexpr auto owner = QFile::ReadOwner | QFile::WriteOwner;

class TokenFile : public ::testing::Test
{
protected:
    QByteArray contents() const
    {
        QFile file(name);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(no file)");
    }

    void write(const QByteArray& content) const
    {
        QFile file(name);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.setPermissions(owner);
        file.write(content);
    }

    QTemporaryDir folder;
    QString name = folder.filePath(QStringLiteral("token"));
};

TEST_F(TokenFile, is_made_for_its_owner_alone_and_kept)
{
    const QString token = ControlToken(name).text();
    EXPECT_EQ(token.size(), 64);
    EXPECT_EQ(contents(), token.toLatin1() + '\n');
    EXPECT_EQ(QFile::permissions(name) & ~(QFile::ReadUser | QFile::WriteUser), owner);
    EXPECT_EQ(ControlToken(name).text(), token);
}

TEST_F(TokenFile, of_the_users_own_is_taken)
{
    write("correct-horse-battery\n");
    EXPECT_EQ(ControlToken(name).text(), QStringLiteral("correct-horse-battery"));
}

TEST_F(TokenFile, that_is_empty_gets_a_token)
{
    write("\n");
    EXPECT_EQ(ControlToken(name).text().size(), 64);
}

TEST_F(TokenFile, that_holds_something_else_is_left_alone)
{
    for (const QByteArray& content :
        { QByteArray("short"), QByteArray("root:x:0:0:root and more\n"), QByteArray(300, 'x'),
            QByteArray("\xff\xfe\xfd\xfc\xfb\xfa\xf9\xf8\xf7\xf6\xf5\xf4\xf3\xf2\xf1\xf0") }) {
        write(content);
        const ControlToken token(name);
        EXPECT_EQ(token.text(), QString());
        EXPECT_TRUE(token.problem().contains(QStringLiteral("Remove it, so that a token is made")));
        EXPECT_EQ(contents(), content);
    }
}

TEST_F(TokenFile, that_others_can_read_is_refused)
{
    write("correct-horse-battery\n");
    QFile::setPermissions(name, owner | QFile::ReadOther);
    const ControlToken token(name);
    EXPECT_EQ(token.text(), QString());
    EXPECT_EQ(token.problem(),
        QStringLiteral("The token file %1 can be read by others; run \"chmod 600 %1\".").arg(name));
}

TEST_F(TokenFile, that_cannot_be_read_or_kept_is_named)
{
    EXPECT_TRUE(
        ControlToken(folder.path())
            .problem()
            .startsWith(QStringLiteral("The token file %1 cannot be read").arg(folder.path())));
    const FullDisk disk(10);
    const ControlToken token(name);
    EXPECT_EQ(token.text(), QString());
    EXPECT_TRUE(token.problem().contains(QStringLiteral("cannot be kept")));
    EXPECT_EQ(contents(), "(no file)");
}

} // namespace
