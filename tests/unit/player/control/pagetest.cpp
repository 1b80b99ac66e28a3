#include "controlfixture.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

class Page : public ControlFixture
{
protected:
    Page()
    {
        options.webRoot = folder.filePath(QStringLiteral("web"));
        write("web/index.html", "<!doctype html>");
        write("web/js/main.js", "code");
        write("secret", "secret");
    }
    void write(const char* name, const QByteArray& bytes)
    {
        const QString path = folder.filePath(QLatin1String(name));
        QDir().mkpath(QFileInfo(path).path());
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }

    QTemporaryDir folder;
};

TEST_F(Page, IsServedUnderAStrictPolicy)
{
    const RawPeer::Answer answer = get("/?token=abc");
    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body, "<!doctype html>");
    EXPECT_EQ(answer.field("Content-Type"), "text/html; charset=utf-8");
    const QByteArray policy = answer.field("Content-Security-Policy");
    EXPECT_TRUE(policy.startsWith("default-src 'self'; img-src 'self' data:; "));
    EXPECT_TRUE(policy.contains("; media-src 'self' blob:; "));
    EXPECT_FALSE(policy.contains("unsafe"));
    EXPECT_TRUE(policy.contains("frame-ancestors 'none'"));
    EXPECT_EQ(answer.field("Referrer-Policy"), "no-referrer");
    EXPECT_EQ(answer.field("X-Content-Type-Options"), "nosniff");
    EXPECT_EQ(get("/js/main.js").body, "code");
    EXPECT_EQ(RawPeer(port()).ask("HEAD", "/").status, 200);
}

TEST_F(Page, EndsAtItsFolder)
{
    for (const char* target : { "/../secret", "/%2e%2e/secret", "/js/..%2f..%2fsecret",
             "/js/%252e%252e/secret", "/..\\secret", "/nothing", "/js", "//secret" }) {
        const RawPeer::Answer answer = get(target);
        EXPECT_TRUE(answer.status == 404 || answer.status == 400) << target;
        EXPECT_FALSE(answer.body.contains("secret")) << target;
    }
}

TEST_F(Page, IsRevalidated)
{
    const QByteArray tag = get("/").field("ETag");
    EXPECT_EQ(get("/", "If-None-Match: " + tag + "\r\n").status, 304);
}
