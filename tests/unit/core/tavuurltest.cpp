#include "tavuurl.h"

#include "printers.h"

#include <gtest/gtest.h>

#include <QUrl>

#include <random>
#include <sstream>

namespace {

TavuUrl url(const char* encoded)
{
    return TavuUrl::fromEncoded(encoded);
}

using Items = TavuUrl::QueryItems;

Items items(std::initializer_list<std::pair<const char*, const char*>> pairs)
{
    Items all;
    for (const auto& [name, value] : pairs)
        all.append({ QString::fromLatin1(name),
            value ? QLatin1String("") + QString::fromLatin1(value) : QString() });
    return all;
}

/// URLs that are written as they were read.
class TavuUrlExact : public ::testing::TestWithParam<const char*>
{
};

TEST_P(TavuUrlExact, come_back_byte_for_byte)
{
    EXPECT_EQ(url(GetParam()).toEncoded(), QByteArray(GetParam()));
    EXPECT_TRUE(url(GetParam()).isValid());
}

TEST_P(TavuUrlExact, come_back_out_of_their_parts)
{
    TavuUrl parts = url(GetParam());
    parts.setPath(parts.path());
    parts.setQueryItems(parts.queryItems());
    if (parts.toEncoded().contains('#'))
        parts.setFragment(parts.fragment());
    EXPECT_EQ(parts.toEncoded(), QByteArray(GetParam()));
}

INSTANTIATE_TEST_SUITE_P(TavuUrl, TavuUrlExact,
    ::testing::Values("https://h.example/", "https://h.example", "https://h.example:8443/a/b.json",
        "https://h/a%2Fb%2Bc%25d", "https://h/?q=a%2Fb%2Bc%25d%26e%3Df", "https://h/?q=a+b%20c",
        "https://h/?x&y=&z=1", "https://h/?a=b=c", "https://h/p;v=1,2:3@x!$&'()*+", "p/q", "/p",
        "?q=1", "#key", "//h/p", "https://h/%E6%97%A5?%C3%A4=%C3%B6", "https://h/a%00b",
        "https://h/a#f%2Fg%25h", "https://user@h/", "https://[::1]:80/x", "https://h/a/../b/./c",
        "https://h/?url=https%3A%2F%2Fi%2F%3Fx%3D1%26y%3D2%23z"));

TEST(TavuUrl, spells_what_means_the_same_in_one_way)
{
    EXPECT_EQ(url("HTTPS://H.Example/").toEncoded(), QByteArray("https://h.example/"));
    EXPECT_EQ(url("https://h/%7e%41%2f").toEncoded(), QByteArray("https://h/~A%2F"));
}

TEST(TavuUrl, mends_characters_that_must_be_encoded)
{
    EXPECT_EQ(
        url("https://h/a b|c?d\"e#f#g").toEncoded(), QByteArray("https://h/a%20b%7Cc?d%22e#f%23g"));
    EXPECT_EQ(url("https://h/100%").toEncoded(), QByteArray("https://h/100%25"));
    EXPECT_EQ(url("https://h/\xC3\xA4").toEncoded(), QByteArray("https://h/%C3%A4"));
}

TEST(TavuUrl, is_empty_when_made_empty)
{
    EXPECT_TRUE(TavuUrl().isEmpty());
    EXPECT_FALSE(TavuUrl().isValid());
    EXPECT_TRUE(url("").isEmpty());
    EXPECT_TRUE(TavuUrl(QString()).isEmpty());
    EXPECT_EQ(TavuUrl().toEncoded(), QByteArray());
}

TEST(TavuUrl, made_from_a_text_reads_it_encoded)
{
    EXPECT_EQ(TavuUrl(QStringLiteral("https://h/a%2Fb?c=%26")).toEncoded(),
        QByteArray("https://h/a%2Fb?c=%26"));
}

TEST(TavuUrl, what_cannot_be_mended_is_invalid)
{
    for (const char* broken : { "https://h:99999/", "https://[::1", "https://h:x/", "http://a b/" })
        EXPECT_FALSE(url(broken).isValid()) << broken;
}

TEST(TavuUrl, whose_host_vanishes_when_it_is_spelled_is_invalid)
{
    EXPECT_FALSE(url("https://\xEF\xBB\xBF.s").isValid());
    EXPECT_FALSE(TavuUrl(QString(QStringLiteral("https://") + QChar(0xFEFF) + QStringLiteral(".s")))
                     .isValid());
}

TEST(TavuUrl, a_relative_reference_is_valid)
{
    EXPECT_TRUE(url("suggestions/page2").isValid());
    EXPECT_TRUE(url("#key").isValid());
}

TEST(TavuUrl, gives_its_parts)
{
    const TavuUrl whole = url("https://user@Music.Example:8443/a%2Fb?c=%2B#d%2Fe");
    EXPECT_EQ(whole.scheme(), QStringLiteral("https"));
    EXPECT_EQ(whole.host(), QStringLiteral("music.example"));
    EXPECT_EQ(whole.port(), 8443);
    EXPECT_TRUE(whole.hasUserInfo());
    EXPECT_EQ(whole.path(), QStringLiteral("/a%2Fb"));
    EXPECT_EQ(whole.queryItems(), items({ { "c", "%2B" } }));
    EXPECT_EQ(whole.fragment(), QStringLiteral("d/e"));
}

TEST(TavuUrl, gives_empty_parts_for_those_it_has_not)
{
    const TavuUrl relative = url("p");
    EXPECT_EQ(relative.scheme(), QString());
    EXPECT_EQ(relative.host(), QString());
    EXPECT_EQ(relative.port(), -1);
    EXPECT_FALSE(relative.hasUserInfo());
    EXPECT_EQ(relative.fragment(), QString());
    EXPECT_TRUE(relative.queryItems().isEmpty());
}

TEST(TavuUrl, gives_the_host_as_it_is_sent)
{
    EXPECT_EQ(url("https://b\xC3\xBC"
                  "cher.example/")
                  .host(),
        QStringLiteral("xn--bcher-kva.example"));
}

TEST(TavuUrl, parts_that_are_set_stand_in_the_url)
{
    TavuUrl changed = url("http://old/p?q=1#f");
    changed.setScheme(QStringLiteral("https"));
    changed.setHost(QStringLiteral("new.example"));
    changed.setPort(444);
    changed.setPath(QStringLiteral("/x%2Fy z"));
    EXPECT_EQ(changed.toEncoded(), QByteArray("https://new.example:444/x%2Fy%20z?q=1#f"));
}

TEST(TavuUrl, is_invalid_for_good_once_a_part_cannot_be_one)
{
    for (const char* path : { "no/slash", "no:slash" }) {
        TavuUrl changed = url("https://h/p?q=1#f");
        changed.setPath(QString::fromLatin1(path));
        EXPECT_FALSE(changed.isValid()) << path;
        changed.setQueryItems({ { QStringLiteral("a"), QStringLiteral("b") } });
        changed.addQueryItem(QStringLiteral("c"), QStringLiteral("d"));
        changed.setFragment(QStringLiteral("f"));
        changed.setScheme(QStringLiteral("https"));
        changed.setHost(QStringLiteral("other"));
        changed.setPort(1);
        changed.setPath(QStringLiteral("/p"));
        EXPECT_FALSE(changed.isValid()) << path;
        EXPECT_FALSE(changed.isEmpty()) << path;
        EXPECT_TRUE(changed.toEncoded().isEmpty()) << path;
    }
}

TEST(TavuUrl, a_fragment_is_set_and_read_as_plain_text)
{
    for (const char* text :
        { "key", "a/b?c", "100%", "%2F", "a#b", "\xC3\xA4 \xF0\x9F\x8E\xB5", "" }) {
        TavuUrl changed = url("https://h/p");
        changed.setFragment(QString::fromUtf8(text));
        EXPECT_EQ(changed.fragment(), QString::fromUtf8(text));
        EXPECT_EQ(url(changed.toEncoded().constData()).fragment(), QString::fromUtf8(text));
    }
    TavuUrl marked = url("https://h/p");
    marked.setFragment(QString(QChar(0xFEFF)));
    EXPECT_EQ(marked.fragment(), QString(QChar(0xFEFF)));
}

TEST(TavuUrl, a_null_fragment_takes_the_fragment_away)
{
    TavuUrl changed = url("https://h/p#f");
    changed.setFragment(QString());
    EXPECT_EQ(changed.toEncoded(), QByteArray("https://h/p"));
    changed.setFragment(QLatin1String(""));
    EXPECT_EQ(changed.toEncoded(), QByteArray("https://h/p#"));
}

TEST(TavuUrl, query_items_keep_their_order_their_doubles_and_their_spelling)
{
    EXPECT_EQ(url("?b=1&a=%20&b=+&flag&empty=").queryItems(),
        items(
            { { "b", "1" }, { "a", "%20" }, { "b", "+" }, { "flag", nullptr }, { "empty", "" } }));
}

TEST(TavuUrl, an_item_without_a_sign_stays_without_one)
{
    const Items read = url("?flag&empty=").queryItems();
    EXPECT_TRUE(read.at(0).second.isNull());
    EXPECT_FALSE(read.at(1).second.isNull());
}

TEST(TavuUrl, set_query_items_replaces_the_query)
{
    TavuUrl changed = url("https://h/p?old=1#f");
    changed.setQueryItems(items({ { "a", "%2F" }, { "flag", nullptr } }));
    EXPECT_EQ(changed.toEncoded(), QByteArray("https://h/p?a=%2F&flag#f"));
    changed.setQueryItems({});
    EXPECT_EQ(changed.toEncoded(), QByteArray("https://h/p#f"));
}

/// Search texts that the server must see as they were typed.
class TavuUrlQueryText : public ::testing::TestWithParam<const char*>
{
};

TEST_P(TavuUrlQueryText, survives_as_the_value_of_a_query_item)
{
    TavuUrl search = url("https://h/search/?old=%2B");
    search.addQueryItem(QStringLiteral("keywords"), QString::fromUtf8(GetParam()));
    const Items read = url(search.toEncoded().constData()).queryItems();
    ASSERT_EQ(read.size(), 2);
    EXPECT_EQ(read.at(0), (QPair<QString, QString>(QStringLiteral("old"), QStringLiteral("%2B"))));
    EXPECT_EQ(read.at(1).first, QStringLiteral("keywords"));
    EXPECT_EQ(
        QUrl::fromPercentEncoding(read.at(1).second.toLatin1()), QString::fromUtf8(GetParam()));
}

INSTANTIATE_TEST_SUITE_P(TavuUrl, TavuUrlQueryText,
    ::testing::Values("beatles", "a b", "a+b", "100%", "%25", "AC/DC", "rock&roll", "a=b", "what?",
        "#1", ";", "\"quoted\"", "Bj\xC3\xB6rk", "\xE6\x97\xA5\xE6\x9C\xAC", ""));

TEST(TavuUrl, a_query_item_is_encoded_strictly)
{
    TavuUrl search = url("https://h/search/");
    search.addQueryItem(QStringLiteral("key words"), QStringLiteral("a+b c/d&e=f"));
    EXPECT_EQ(
        search.toEncoded(), QByteArray("https://h/search/?key%20words=a%2Bb%20c%2Fd%26e%3Df"));
}

/// RFC 3986, sections 5.4.1 and 5.4.2: a reference and what it is from http://a/b/c/d;p?q.
class TavuUrlResolved : public ::testing::TestWithParam<std::pair<const char*, const char*>>
{
};

TEST_P(TavuUrlResolved, is_what_the_standard_says)
{
    const auto [reference, target] = GetParam();
    EXPECT_EQ(url("http://a/b/c/d;p?q").resolved(url(reference)).toEncoded(), QByteArray(target));
}

INSTANTIATE_TEST_SUITE_P(Normal, TavuUrlResolved,
    ::testing::Values(std::pair("g:h", "g:h"), std::pair("g", "http://a/b/c/g"),
        std::pair("./g", "http://a/b/c/g"), std::pair("g/", "http://a/b/c/g/"),
        std::pair("/g", "http://a/g"), std::pair("//g", "http://g"),
        std::pair("?y", "http://a/b/c/d;p?y"), std::pair("g?y", "http://a/b/c/g?y"),
        std::pair("#s", "http://a/b/c/d;p?q#s"), std::pair("g#s", "http://a/b/c/g#s"),
        std::pair("g?y#s", "http://a/b/c/g?y#s"), std::pair(";x", "http://a/b/c/;x"),
        std::pair("g;x", "http://a/b/c/g;x"), std::pair("g;x?y#s", "http://a/b/c/g;x?y#s"),
        std::pair("", "http://a/b/c/d;p?q"), std::pair(".", "http://a/b/c/"),
        std::pair("./", "http://a/b/c/"), std::pair("..", "http://a/b/"),
        std::pair("../", "http://a/b/"), std::pair("../g", "http://a/b/g"),
        std::pair("../..", "http://a/"), std::pair("../../", "http://a/"),
        std::pair("../../g", "http://a/g")));

INSTANTIATE_TEST_SUITE_P(Abnormal, TavuUrlResolved,
    ::testing::Values(std::pair("../../../g", "http://a/g"),
        std::pair("../../../../g", "http://a/g"), std::pair("/./g", "http://a/g"),
        std::pair("/../g", "http://a/g"), std::pair("g.", "http://a/b/c/g."),
        std::pair(".g", "http://a/b/c/.g"), std::pair("g..", "http://a/b/c/g.."),
        std::pair("..g", "http://a/b/c/..g"), std::pair("./../g", "http://a/b/g"),
        std::pair("./g/.", "http://a/b/c/g/"), std::pair("g/./h", "http://a/b/c/g/h"),
        std::pair("g/../h", "http://a/b/c/h"), std::pair("g;x=1/./y", "http://a/b/c/g;x=1/y"),
        std::pair("g;x=1/../y", "http://a/b/c/y"), std::pair("g?y/./x", "http://a/b/c/g?y/./x"),
        std::pair("g?y/../x", "http://a/b/c/g?y/../x"),
        std::pair("g#s/./x", "http://a/b/c/g#s/./x"),
        std::pair("g#s/../x", "http://a/b/c/g#s/../x")));

INSTANTIATE_TEST_SUITE_P(Encoded, TavuUrlResolved,
    ::testing::Values(std::pair("a%2F..%2Fb", "http://a/b/c/a%2F..%2Fb"),
        std::pair("g?u=http%3A%2F%2Fx%2F", "http://a/b/c/g?u=http%3A%2F%2Fx%2F"),
        std::pair("%25", "http://a/b/c/%25"), std::pair("g?a+b", "http://a/b/c/g?a+b")));

/// Texts that are made of what URLs are made of, good and bad.
class Texts
{
public:
    QByteArray next()
    {
        static const QList<QByteArray> pieces{ "http://", "https://", "HTTP://", "//", "/", "a",
            "B", "host.example", "127.0.0.1", "1.2.3", "0x7f", "256.1.1.1", "-a", "a-.b", "..", ".",
            "xn--4ca", "a_b", "[::1]", ":", ":80", ":080", ":65535", ":65536", "@", "u@", "?", "#",
            "&", "=", "%2F", "%2f", "%41", "%7e", "%", "%4", "%zz", "%00", "%C3%A4", "%FF", "+",
            " ", "\"", "'", "[", "]", "|", "\\", "^", "{", "~", "_", "!", "*", "(", ",", ";", "$",
            "\xC3\xA4", "javascript:", "x:", "9", "1" };
        QByteArray text;
        for (unsigned count = m_random() % 7; count > 0; --count)
            text += pieces.at(static_cast<int>(m_random() % static_cast<unsigned>(pieces.size())));
        return text;
    }

private:
    std::mt19937 m_random{ 1 };
};

TEST(TavuUrl, reads_what_the_library_reads)
{
    Texts texts;
    for (int round = 0; round < 100000; ++round) {
        const QByteArray text = texts.next();
        const QUrl expected = QUrl::fromEncoded(text, QUrl::TolerantMode);
        const TavuUrl read = TavuUrl::fromEncoded(text);
        ASSERT_EQ(read.toEncoded(), expected.toEncoded()) << text.toStdString();
        ASSERT_EQ(read.isEmpty(), expected.isEmpty()) << text.toStdString();
        if (!read.isValid())
            continue;
        ASSERT_EQ(read.scheme(), expected.scheme()) << text.toStdString();
        ASSERT_EQ(read.host(), expected.host(QUrl::FullyEncoded)) << text.toStdString();
        ASSERT_EQ(read.port(), expected.port()) << text.toStdString();
        ASSERT_EQ(read.path(), expected.path(QUrl::FullyEncoded)) << text.toStdString();
        ASSERT_EQ(read.fragment(), expected.fragment(QUrl::FullyDecoded)) << text.toStdString();
        ASSERT_EQ(read.hasUserInfo(), !expected.userInfo().isEmpty()) << text.toStdString();
    }
}

TEST(TavuUrl, what_was_read_or_resolved_reads_as_itself)
{
    Texts texts;
    const TavuUrl base = url("http://a/b/c/d;p?q");
    for (int round = 0; round < 100000; ++round) {
        const TavuUrl read = TavuUrl::fromEncoded(texts.next());
        const TavuUrl target = base.resolved(read);
        ASSERT_EQ(TavuUrl::fromEncoded(read.toEncoded()), read) << read;
        ASSERT_EQ(TavuUrl::fromEncoded(target.toEncoded()), target) << read << " gave " << target;
    }
}

TEST(TavuUrl, a_text_is_resolved_as_the_url_that_it_is)
{
    Texts texts;
    for (const char* from : { "http://a/b/c/d;p?q", "http://a", "http://a?q", "http://a/./b/../c",
             "b/c", "//a", "HTTP://\xC3\xA4/b c/", "" }) {
        const TavuUrl base = TavuUrl::fromEncoded(from);
        for (int round = 0; round < 20000; ++round) {
            const QString text = QString::fromUtf8(texts.next());
            ASSERT_EQ(base.resolvedText(text), base.resolved(TavuUrl(text)).toString())
                << base << ", " << text.toStdString();
        }
    }
}

TEST(TavuUrl, a_path_behind_a_bare_host_begins_at_its_root)
{
    EXPECT_EQ(url("http://a").resolved(url("b?c#d")).toEncoded(), QByteArray("http://a/b?c#d"));
    EXPECT_EQ(url("http://a?q").resolved(url("b")).toEncoded(), QByteArray("http://a/b"));
    EXPECT_EQ(url("http://a?q").resolved(url("#f")).toEncoded(), QByteArray("http://a?q#f"));
}

TEST(TavuUrl, a_resolved_url_knows_its_parts)
{
    const TavuUrl target = url("http://a:8080/b/c?q").resolved(url("../d/./e?f#g%20h"));
    EXPECT_EQ(target.host(), QStringLiteral("a"));
    EXPECT_EQ(target.port(), 8080);
    EXPECT_EQ(target.path(), QStringLiteral("/d/e"));
    EXPECT_EQ(target.queryItems(), (TavuUrl::QueryItems{ { QStringLiteral("f"), QString() } }));
    EXPECT_EQ(target.fragment(), QStringLiteral("g h"));
}

TEST(TavuUrl, a_local_reference_takes_the_documents_own_url)
{
    EXPECT_EQ(url("https://h/page?x=1#old").resolved(url("#new")).toEncoded(),
        QByteArray("https://h/page?x=1#new"));
}

TEST(TavuUrl, equality_is_that_of_the_encoded_url)
{
    EXPECT_EQ(url("https://h/%7Ea"), url("HTTPS://H/~a"));
    EXPECT_NE(url("https://h/a%2Fb"), url("https://h/a/b"));
    EXPECT_NE(url("https://h/a"), url("https://h/a#f"));
    EXPECT_EQ(TavuUrl(), url(""));
}

TEST(TavuUrl, is_logged_encoded)
{
    std::ostringstream log;
    log << url("https://h/a b");
    EXPECT_EQ(log.str(), "https://h/a%20b");
    EXPECT_EQ(url("https://h/a b").toString(), QStringLiteral("https://h/a%20b"));
}

TEST(TavuUrl, travels_in_a_variant)
{
    EXPECT_EQ(QVariant::fromValue(url("https://h/")).value<TavuUrl>(), url("https://h/"));
}

} // namespace
