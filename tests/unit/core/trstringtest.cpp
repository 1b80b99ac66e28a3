#include "trstring.h"

#include "language.h"
#include "mimetypes.h"
#include "printers.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QTranslator>

namespace {

TrString with(const char* text, const QList<TrArg>& args)
{
    return TrString(TrCharData(trExtractContext("Test"), text), args);
}

TEST(TrString, reads_as_its_source_text_without_a_translator)
{
    EXPECT_EQ(TrString("Close").toString(), QStringLiteral("Close"));
    EXPECT_EQ(
        TrString(QStringLiteral("Schlie\u00DFen")).toString(), QStringLiteral("Schlie\u00DFen"));
    EXPECT_EQ(with("See more", {}).toString(), QStringLiteral("See more"));
    EXPECT_EQ(TrString().toString(), QString());
}

TEST(TrString, puts_its_arguments_in_place)
{
    EXPECT_EQ(with("%1 of %2", { QStringLiteral("3"), QStringLiteral("7") }).toString(),
        QStringLiteral("3 of 7"));
    EXPECT_EQ(with("%2 before %1", { QStringLiteral("b"), QStringLiteral("a") }).toString(),
        QStringLiteral("a before b"));
    EXPECT_EQ(
        with("%1, %1", { QStringLiteral("again") }).toString(), QStringLiteral("again, again"));
}

TEST(TrString, a_placeholder_in_an_argument_survives)
{
    EXPECT_EQ(with("%1 (%2)", { QStringLiteral("100%1 %2 %"), QStringLiteral("%1") }).toString(),
        QStringLiteral("100%1 %2 % (%1)"));
}

TEST(TrString, a_placeholder_without_argument_stays)
{
    EXPECT_EQ(with("%1 %2", { QStringLiteral("a") }).toString(), QStringLiteral("a %2"));
    EXPECT_EQ(with("%0 %x 5%", { QStringLiteral("a") }).toString(), QStringLiteral("%0 %x 5%"));
}

TEST(TrString, a_text_without_arguments_is_left_alone)
{
    EXPECT_EQ(TrString(QStringLiteral("Track %1")).toString(), QStringLiteral("Track %1"));
    EXPECT_EQ(TrString("100%n").toString(), QStringLiteral("100%n"));
}

TEST(TrString, tenth_argument_is_not_the_first_and_a_digit)
{
    QList<TrArg> args;
    for (int number = 1; number <= 10; ++number)
        args.append(QStringLiteral("<%1>").arg(number));
    EXPECT_EQ(with("%10%1", args).toString(), QStringLiteral("<10><1>"));
}

class Backwards : public QTranslator
{
public:
    QString translate(const char* context, const char* source, const char*, int) const override
    {
        if (qstrcmp(context, "Test") != 0)
            return QString();
        return qstrcmp(source, "%1 by %2") == 0 ? QStringLiteral("%2: %1") : QString();
    }
    bool isEmpty() const override { return false; }
};

TEST(TrString, is_translated_when_it_is_read)
{
    const TrString text = with("%1 by %2", { QStringLiteral("song"), QStringLiteral("band") });
    EXPECT_EQ(text.toString(), QStringLiteral("song by band"));
    Backwards translator;
    QCoreApplication::installTranslator(&translator);
    EXPECT_EQ(text.toString(), QStringLiteral("band: song"));
    EXPECT_EQ(TrString("%1 by %2").toString(), QStringLiteral("%1 by %2")); // Another context.
    QCoreApplication::removeTranslator(&translator);
    EXPECT_EQ(text.toString(), QStringLiteral("song by band"));
}

TEST(Language, marks_text_without_translating_it)
{
    Backwards translator;
    QCoreApplication::installTranslator(&translator);
    EXPECT_EQ(Language::ntr(TrCharData(trExtractContext("Test"), "%1 by %2")),
        QStringLiteral("%1 by %2"));
    QCoreApplication::removeTranslator(&translator);
}

TEST(MimeTypes, names_audio_of_an_unknown_format)
{
    EXPECT_EQ(MimeTypes::Audio::unknown(), QStringLiteral("audio/unknown"));
}

} // namespace
