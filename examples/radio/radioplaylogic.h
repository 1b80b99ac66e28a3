#pragma once

#include "streamerplaylogic.h"

#include <QVector>

/// Plays stations. Nothing follows a station by itself; next and previous go round the list.
class RadioPlayLogic : public StreamerPlayLogic
{
    Q_OBJECT

public:
    /// `stations` are the rows that can be played, in their order.
    RadioPlayLogic(CMNodes* nodes, const CMPath& path, const QVector<TavuRoles>& stations);

protected:
    void playInternal(const CMSetDataRequest& request, const TavuPlayLogicPlayArgs& args) override;
    void likeInternal(const CMSetDataRequest& request) override;
    void dislikeInternal(const CMSetDataRequest& request) override;
    void nextInternal(const CMSetDataRequest& request) override;
    void previousInternal(const CMSetDataRequest& request) override;
    void prepareNextMedia() override;
    TavuPlayLogicData mediaPlaybackStarted(
        const TavuRoles& mediaRoles, const TavuRoles& trackRoles) override;

private:
    void tune(const CMSetDataRequest& request, int station);
    void step(const CMSetDataRequest& request, int by);

    const QVector<TavuRoles> m_stations;
    int m_station = -1; // The one that was tuned to last; -1 before the first.
};
