#include "settings.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

using player::Settings;

namespace {

class SettingsFile : public ::testing::Test
{
protected:
    QString write(const QByteArray& text)
    {
        const QString name = m_folder.filePath(QStringLiteral("player.conf"));
        QFile file(name);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
        return name;
    }

    QString errorOf(const QByteArray& text)
    {
        Settings settings;
        EXPECT_FALSE(settings.load(write(text), true));
        return settings.error();
    }

    QTemporaryDir m_folder;
};

TEST_F(SettingsFile, gives_the_defaults_when_there_is_no_file)
{
    Settings settings;
    EXPECT_TRUE(settings.load(m_folder.filePath(QStringLiteral("none")), false));
    EXPECT_EQ(settings.number("service.max-queue-size"), 500);
    EXPECT_EQ(settings.number("player.previous-limit-ms"), 3000);
    EXPECT_EQ(settings.text("control.address"), QStringLiteral("127.0.0.1"));
    EXPECT_TRUE(settings.boolean("player.mpris"));
}

TEST_F(SettingsFile, complains_of_a_file_that_was_named_and_is_not_there)
{
    Settings settings;
    EXPECT_FALSE(settings.load(m_folder.filePath(QStringLiteral("none")), true));
    EXPECT_TRUE(settings.error().contains(QStringLiteral("cannot be read")));
}

TEST_F(SettingsFile, reads_values_comments_and_sections)
{
    Settings settings;
    ASSERT_TRUE(settings.load(
        write("# comment\n\n[control]\n  port = 0 \n[player]\nname=Küche = 1\n"), true))
        << settings.error().toStdString();
    EXPECT_EQ(settings.number("control.port"), 0);
    EXPECT_EQ(settings.text("player.name"), QStringLiteral("Küche = 1"));
}

TEST_F(SettingsFile, names_the_line_and_the_nearest_key_of_an_unknown_one)
{
    const QString error = errorOf("[control]\n\nprot = 1\n");
    EXPECT_TRUE(error.contains(QStringLiteral("line 3"))) << error.toStdString();
    EXPECT_TRUE(error.contains(QStringLiteral("\"control.port\""))) << error.toStdString();
}

TEST_F(SettingsFile, refuses_values_of_the_wrong_type_and_says_what_is_wanted)
{
    EXPECT_TRUE(
        errorOf("[control]\nport = 70000\n").contains(QStringLiteral("a port from 0 to 65535")));
    EXPECT_TRUE(errorOf("[player]\nmpris = yes\n").contains(QStringLiteral("true or false")));
    EXPECT_TRUE(
        errorOf("[service]\nbase-url = music\n").contains(QStringLiteral("URL with a host")));
    EXPECT_TRUE(
        errorOf("[service]\nmax-queue-size = -1\n").contains(QStringLiteral("a number from 0")));
}

TEST_F(SettingsFile, refuses_a_line_that_is_no_assignment)
{
    EXPECT_TRUE(errorOf("[control]\nport\n").contains(QStringLiteral("neither")));
}

TEST_F(SettingsFile, takes_nothing_over_from_a_file_with_a_fault)
{
    Settings settings;
    EXPECT_FALSE(settings.load(write("[control]\nport = 1\nnope = 2\n"), true));
    EXPECT_EQ(settings.number("control.port"), 6680);
}

TEST_F(SettingsFile, lets_the_command_line_win)
{
    Settings settings;
    ASSERT_TRUE(settings.load(write("[control]\nport = 1\n"), true));
    EXPECT_TRUE(settings.apply(QStringLiteral("control.port=2")));
    EXPECT_EQ(settings.number("control.port"), 2);
    EXPECT_FALSE(settings.apply(QStringLiteral("control.port")));
    EXPECT_FALSE(settings.apply(QStringLiteral("nope.nope=1")));
}

TEST_F(SettingsFile, writes_a_sample_that_it_reads_back)
{
    Settings settings;
    ASSERT_TRUE(settings.apply(QStringLiteral("player.name=Kitchen")));
    Settings again;
    ASSERT_TRUE(again.load(write(settings.toFile().toUtf8()), true)) << again.error().toStdString();
    EXPECT_EQ(again.text("player.name"), QStringLiteral("Kitchen"));
    EXPECT_EQ(again.toFile(), settings.toFile());
}

TEST_F(SettingsFile, survives_every_cut_and_every_flipped_bit)
{
    const QByteArray sample = Settings().toFile().toUtf8();
    for (int at = 0; at < sample.size(); at += 7) {
        Settings cut;
        cut.load(write(sample.left(at)), true);
        QByteArray flipped = sample;
        flipped[at] = static_cast<char>(flipped[at] ^ (1 << at % 8));
        Settings settings;
        if (!settings.load(write(flipped), true)) {
            EXPECT_FALSE(settings.error().isEmpty());
        }
    }
}

} // namespace
