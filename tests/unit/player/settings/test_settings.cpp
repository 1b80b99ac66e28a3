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
    for (const QString& name : { m_folder.filePath(QStringLiteral("none")), m_folder.path() }) {
        EXPECT_FALSE(settings.load(name, true));
        EXPECT_TRUE(settings.error().startsWith(
            QStringLiteral("The settings file %1 cannot be read: ").arg(name)))
            << settings.error().toStdString();
        EXPECT_TRUE(settings.error().endsWith(
            QStringLiteral("Name another with --config, or make one: \"tavu-player "
                           "--print-config\" prints a fresh "
                           "file.")));
    }
}

TEST_F(SettingsFile, refuses_what_is_no_text_and_shows_none_of_it)
{
    for (const QByteArray& line : { QByteArray("name = \xff\xfe", 9), QByteArray("name = a\0b", 10),
             QByteArray("\xc3", 1) }) {
        EXPECT_TRUE(errorOf("[player]\n" + line + "\n")
                        .endsWith(QStringLiteral(
                            ", line 2: this is not UTF-8 text. Mend the line, or start afresh: "
                            "\"tavu-player --print-config\" prints a fresh file.")));
    }
    EXPECT_TRUE(errorOf("[player]\nname = a\x07"
                        "b\n")
                    .contains(QStringLiteral("control characters")));
    const QString odd = errorOf("[player]\n\x1b[2J = 1\n");
    EXPECT_FALSE(odd.contains(QLatin1Char('\x1b'))) << odd.toStdString();
    EXPECT_TRUE(odd.contains(QStringLiteral("line 2: there is no setting \"player.")));
}

TEST_F(SettingsFile, takes_the_files_of_other_editors)
{
    Settings settings;
    ASSERT_TRUE(settings.load(write("\xef\xbb\xbf[player]\r\nname = Bath\r\n"), true))
        << settings.error().toStdString();
    EXPECT_EQ(settings.text("player.name"), QStringLiteral("Bath"));
}

TEST_F(SettingsFile, refuses_a_file_without_end)
{
    Settings settings;
    EXPECT_FALSE(settings.load(write(QByteArray(2 * 1024 * 1024, '#')), true));
    EXPECT_TRUE(settings.error().contains(QStringLiteral("too long for a settings file")));
    EXPECT_FALSE(settings.load(QStringLiteral("/dev/zero"), true));
    EXPECT_FALSE(settings.error().isEmpty());
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
    EXPECT_TRUE(errorOf("[player]\nmpris-bus = user\n")
                    .contains(QStringLiteral("auto, session or system, not \"user\"")));
    EXPECT_TRUE(
        errorOf("[service]\nbase-url = music\n").contains(QStringLiteral("URL with a host")));
    EXPECT_TRUE(
        errorOf("[service]\nmax-queue-size = -1\n").contains(QStringLiteral("a number from 0")));
    EXPECT_TRUE(
        errorOf("[player]\nvolume = 101\n").contains(QStringLiteral("a number from 0 to 100,")));
    EXPECT_TRUE(errorOf("[service]\nbase-url = httpx://host/\n")
                    .contains(QStringLiteral("a http or https URL")));
    EXPECT_TRUE(errorOf("[control]\naddress = localhost\n")
                    .contains(QStringLiteral("an IP address, such as 127.0.0.1")));
    EXPECT_TRUE(
        errorOf("[log]\nlevel = loud\n").contains(QStringLiteral("error or off, not \"loud\"")));
    for (const char* mappings : { "music", "a:443:b", "a:443:b:c", "a:443:127.0.0.1:1 b" })
        EXPECT_TRUE(errorOf(QByteArray("[service]\nconnect-to = ") + mappings + '\n')
                        .contains(QStringLiteral("host:port:address:port")))
            << mappings;
}

TEST_F(SettingsFile, takes_mappings_of_names_and_addresses)
{
    Settings settings;
    for (const char* mappings : { "", "a.test:443:127.0.0.1:8443", "a:443:b:1  ::[::1]:80" })
        EXPECT_TRUE(settings.apply(QStringLiteral("service.connect-to=") + QLatin1String(mappings)))
            << settings.error().toStdString();
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
