#include "amazonMusicResource.h"

#include <gtest/gtest.h>

namespace {

TEST(AmazonMusicResource, IsValidBeforeItsEndAndNoLongerAtIt)
{
    TavuResource resource;
    resource.setValidUntil(1000);
    EXPECT_TRUE(amazonMusicResourceValid(resource, 999));
    EXPECT_FALSE(amazonMusicResourceValid(resource, 1000));
    EXPECT_FALSE(amazonMusicResourceValid(resource, 1001));
}

TEST(AmazonMusicResource, WithoutAnEndItIsNotValid)
{
    EXPECT_FALSE(amazonMusicResourceValid(TavuResource(), 1));
}

} // namespace
