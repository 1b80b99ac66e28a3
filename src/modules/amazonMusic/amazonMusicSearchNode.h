#pragma once

#include "cmquerynode.h"

class CMAmazonMusicWorker;
class CMNodes;

/// Turns a text that the user enters into the browse path of the service's answer to it. Searches
/// nothing by itself and answers at once.
class CMAmazonMusicSearchQueryNode : public CMQueryNode
{
    Q_OBJECT

public:
    /// Makes a node and puts it into `nodes`, which owns it. `worker` is not owned.
    static CMAmazonMusicSearchQueryNode* create(
        CMAmazonMusicWorker* worker, CMNodes* nodes, const CMPath& path);
    ~CMAmazonMusicSearchQueryNode() override;

    /// The text is the path's parameter "query", or else the request's value; the answer is the
    /// encoded path of the results. An empty text is a text too. Always true.
    bool queryRequest(const CMSetDataRequest& request) override;

    CMAmazonMusicWorker* worker() const;

public Q_SLOTS:
    /// A further search, answered like the first.
    void searchMore(const CMSetDataRequest& request);

private:
    CMAmazonMusicSearchQueryNode(CMAmazonMusicWorker* worker, const CMPath& path);

    CMAmazonMusicWorker* m_worker; // Not owned.
};
