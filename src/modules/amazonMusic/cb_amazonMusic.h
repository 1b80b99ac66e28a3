#pragma once

#include "cmnodesworker.h"
#include "httpclient.h"
#include "tavuactionreply.h"
#include "tavumediadata.h"

class AmazonMusicBrowser;
class AmazonMusicConnect;
class AmazonMusicParser;
class AmazonMusicPlayLogic;
class AmazonMusicReporter;
class AmazonMusicRetriever;
class CMAmazonMusicSearchQueryNode;
class CMListRowsNode;
class OAuth2UiDeviceCode;

/// The plug-in: makes every other object of it, publishes its fixed nodes, registers the service
/// with the host's login, and sends each rows request to whoever answers it: the login screens
/// while the user is signed out, the browser for what lies under the browse path, else the nodes.
class CMAmazonMusicWorker : public CMNodesWorker
{
    Q_OBJECT

public:
    /// Blocks until the host's OAuth 2 service, which runs on another thread, has answered.
    explicit CMAmazonMusicWorker(const QVariantHash& settings);
    ~CMAmazonMusicWorker() override;

    /// Callable on any thread; returns at once.
    void getRowsRequest(const CMGetRowsRequest& request) override;

    /// Closes the screen that an action was started from.
    TavuActionReply createCloseReply() const;

public Q_SLOTS:
    void on_loggedIn_changed(bool value);
    void on_getRows_invoke(const CMGetRowsRequest& request);
    /// Posts to the URL in the path's parameter "url"; whatever the service answers closes the
    /// screen. A request that cannot be sent at all is left unanswered.
    void on_browsePostAction_activated(const CMSetDataRequest& request);
    /// Rates what the URL in the path's parameter "url" stands for, up when the value is true, else
    /// down, and leads to a short-lived screen with the service's answer.
    void on_browseRating_activated(const CMSetDataRequest& request);

private:
    void createObjects();
    void createSearch();
    void createActions();
    void registerService();
    void createLogin();
    void postActionFinished(const HttpClient::Result& result, const CMSetDataRequest& request);
    void showRatingMessage(const QString& message, const CMSetDataRequest& request);

    AmazonMusicConnect* m_connect = nullptr; // Never deleted, as the next three.
    AmazonMusicBrowser* m_browser = nullptr;
    AmazonMusicParser* m_parser = nullptr;
    AmazonMusicRetriever* m_retriever = nullptr;
    AmazonMusicReporter* m_reporter = nullptr; // A child of this object.
    AmazonMusicPlayLogic* m_playLogic = nullptr; // Owned by the node tree, as the next three.
    CMAmazonMusicSearchQueryNode* m_searchQueryNode = nullptr;
    CMListRowsNode* m_searchNode = nullptr;
    CMListRowsNode* m_stationsErrorNode = nullptr;
    bool m_loggedIn = false;
    OAuth2UiDeviceCode* m_deviceCodeUi = nullptr; // A child of this object.
};
