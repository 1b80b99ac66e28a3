#include "musicfolder.h"

#include "tavujson.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QProcess>
#include <QTcpServer>
#include <QTemporaryDir>

#include <csignal>

namespace {

QString text(const char* utf8)
{
    return QString::fromUtf8(utf8);
}

// The program itself, with a folder of one track.
class Program : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_EQ(makeTone(music() + text("/1.flac"), emulator::samples::Format::Flac,
                      tagged("A", "One", "x"), 0.1)
                      .toStdString(),
            "");
    }

    void TearDown() override
    {
        m_process.kill();
        m_process.waitForFinished();
    }

    QString music() const { return m_folder.filePath(text("music")); }

    void start(const QStringList& more = {})
    {
        m_process.start(text(EMULATOR_PROGRAM),
            QStringList{ text("--state"), m_folder.filePath(text("state")) } + more
                + QStringList{ music() });
        ASSERT_TRUE(m_process.waitForStarted());
    }

    QByteArray line()
    {
        while (!m_process.canReadLine() && m_process.waitForReadyRead(10000)) { }
        return m_process.readLine();
    }

    int exitCode()
    {
        EXPECT_TRUE(m_process.waitForFinished(10000));
        EXPECT_EQ(m_process.exitStatus(), QProcess::NormalExit);
        return m_process.exitCode();
    }

    QTemporaryDir m_folder;
    QProcess m_process;
};

} // namespace

TEST_F(Program, TellsWhenItIsReadyAndEndsWhenAsked)
{
    const QString readyFile = m_folder.filePath(text("ready"));
    start({ text("--ready-file"), readyFile });
    const QByteArray told = line();
    const QVariantHash ready = TavuJson::parse(told).toHash();
    EXPECT_TRUE(ready.value(text("ready")).toBool());
    EXPECT_GT(ready.value(text("httpPort")).toInt(), 0);
    EXPECT_GT(ready.value(text("tlsPort")).toInt(), 0);
    EXPECT_TRUE(QFile::exists(ready.value(text("caFile")).toString()));
    EXPECT_EQ(ready.value(text("baseUrl")).toString(), text("https://music.localhost/"));
    EXPECT_EQ(ready.value(text("domainSuffix")).toString(), text(".music.localhost"));
    QFile file(readyFile);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), told);
    m_process.terminate();
    EXPECT_EQ(exitCode(), 0);
}

TEST_F(Program, NamesAPortInUseAndEndsWithTwo)
{
    QTcpServer holder;
    ASSERT_TRUE(holder.listen(QHostAddress::LocalHost));
    for (const char* option : { "--http-port", "--tls-port" }) {
        start({ text(option), QString::number(holder.serverPort()) });
        EXPECT_EQ(exitCode(), 2);
        EXPECT_TRUE(
            m_process.readAllStandardError().contains(QByteArray::number(holder.serverPort())));
    }
}

TEST_F(Program, EndsWithTwoForWrongArguments)
{
    start({ text("--wat") });
    EXPECT_EQ(exitCode(), 2);
    EXPECT_TRUE(m_process.readAllStandardError().contains("--help"));
}

TEST_F(Program, PrintsNoSecret)
{
    start({ text("--client-secret"), text("hush-hush") });
    EXPECT_FALSE(line().contains("hush-hush"));
    m_process.terminate();
    EXPECT_EQ(exitCode(), 0);
    EXPECT_FALSE(m_process.readAllStandardError().contains("hush-hush"));
}
