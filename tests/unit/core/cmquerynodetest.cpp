#include "cmquerynode.h"

#include "cmnodes.h"
#include "printers.h"
#include "replies.h"

#include <gtest/gtest.h>

namespace {

class Search : public CMQueryNode
{
public:
    Search()
        : CMQueryNode(CMPath(QStringLiteral("/search/query")))
    {
    }

    bool queryRequest(const CMSetDataRequest& request) override
    {
        if (request.value().toString().isEmpty())
            return false;
        request.reply().setValue(QStringLiteral("found ") + request.value().toString());
        return true;
    }
};

TEST(CMQueryNode, delivers_a_query)
{
    Search search;
    const CMSetDataRequest request(search.path(), QStringLiteral("blue"));
    search.request(request);
    EXPECT_EQ(expectValue(request.reply()).toString(), QStringLiteral("found blue"));
}

TEST(CMQueryNode, a_query_that_the_node_refuses_fails)
{
    Search search;
    const CMSetDataRequest request(search.path(), QString());
    search.request(request);
    expectError(request.reply(), QStringLiteral("/search/query does not answer such a request."));
}

TEST(CMQueryNode, may_answer_later)
{
    class Slow : public Search
    {
    public:
        CMSetDataRequest asked;
        bool queryRequest(const CMSetDataRequest& request) override
        {
            asked = request;
            return true;
        }
    } slow;
    const CMSetDataRequest request(slow.path(), QStringLiteral("blue"));
    slow.request(request);
    expectPending(request.reply());
    slow.asked.reply().setValue(1);
    EXPECT_EQ(expectValue(request.reply()), QVariant(1));
}

TEST(CMQueryNode, is_a_folder_with_the_roles_that_were_set)
{
    Search search;
    search.setTitle(TrString("Search"));
    EXPECT_EQ(search.roles().type(), TavuRolesType::Folder);
    EXPECT_EQ(search.getRoleData(TavuRoles::Title(), {}), QVariant(QStringLiteral("Search")));
    EXPECT_FALSE(search.getRoleData(QStringLiteral("none"), {}).isValid());
}

} // namespace
