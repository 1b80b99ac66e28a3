#include "redactor.h"

#include <gtest/gtest.h>

using player::redacted;

namespace {

TEST(Redactor, leaves_an_innocent_line_alone)
{
    EXPECT_EQ(redacted("Enter void f(const QString&): value: 3"),
        "Enter void f(const QString&): value: 3");
}

TEST(Redactor, takes_out_the_bearer_token)
{
    EXPECT_EQ(redacted("authorization: Bearer abc.DEF-123 next"), "authorization: ***");
    EXPECT_EQ(redacted("sent Bearer abc.DEF-123 next"), "sent Bearer *** next");
}

TEST(Redactor, takes_tokens_and_codes_out_of_json)
{
    EXPECT_EQ(redacted(R"({"access_token":"aaa","refresh_token": "bbb","expires_in":5})"),
        R"({"access_token":"***","refresh_token": "***","expires_in":5})");
    EXPECT_EQ(redacted(R"({"device_code":"ccc","user_code":"ddd"})"),
        R"({"device_code":"***","user_code":"***"})");
}

TEST(Redactor, takes_the_signed_part_out_of_urls)
{
    EXPECT_EQ(redacted("http://a/b?x=1&sig=abcd&y=2"), "http://a/b?x=1&sig=***&y=2");
    EXPECT_EQ(redacted("/AmazonMusic/browse?url=http%3A%2F%2Fa%2Fb%3Ftoken%3Dabcd%26y%3D2"),
        "/AmazonMusic/browse?url=http%3A%2F%2Fa%2Fb%3Ftoken%3D***%26y%3D2");
}

TEST(Redactor, takes_out_key_headers)
{
    EXPECT_EQ(redacted(R"({"key-headers":["X-Key: 1","X-B: 2"],"token":"t"})"),
        R"({"key-headers":[***],"token":"***"})");
    EXPECT_EQ(redacted("x-audio-key: 0102030405"), "x-audio-key: ***");
}

TEST(Redactor, takes_out_what_it_was_told_is_secret)
{
    player::addSecret("s3cr3t-value");
    player::addSecret("tiny");
    EXPECT_EQ(redacted("a s3cr3t-value and s3cr3t-value, tiny"), "a *** and ***, tiny");
}

TEST(Redactor, forgets_what_others_have_replaced_and_never_what_lasts)
{
    player::addLastingSecret("lasting-one");
    player::addSecret("passing-one");
    for (int i = 0; i < 63; ++i)
        player::addSecret("another-" + std::to_string(i));
    EXPECT_EQ(redacted("lasting-one passing-one"), "*** ***");
    player::addSecret("one-too-many");
    EXPECT_EQ(redacted("lasting-one passing-one"), "*** passing-one");
}

TEST(Redactor, remembers_what_is_told_again_and_again)
{
    for (int i = 0; i < 100; ++i) {
        player::addSecret("told-again");
        player::addSecret("replaced-" + std::to_string(i));
    }
    EXPECT_EQ(redacted("told-again replaced-99 replaced-0"), "*** *** replaced-0");
}

} // namespace
