#include "radioplaylogic.h"

#include <algorithm>

namespace {

constexpr TrContext context = trExtractContext("radio");

CMError error(const char* message)
{
    return CMError(TrString(TrCharData(context, message)));
}

} // namespace

RadioPlayLogic::RadioPlayLogic(
    CMNodes* nodes, const CMPath& path, const QVector<TavuRoles>& stations)
    : StreamerPlayLogic(nodes, path)
    , m_stations(stations)
{
}

void RadioPlayLogic::playInternal(
    const CMSetDataRequest& request, const TavuPlayLogicPlayArgs& args)
{
    const CMPath wanted = args.trackRoles().path();
    const auto station = std::find_if(m_stations.begin(), m_stations.end(),
        [&wanted](const TavuRoles& row) { return row.path() == wanted; });
    if (station == m_stations.end())
        return request.reply().setError(error("This station is not in the playlist."));
    tune(request, static_cast<int>(station - m_stations.begin()));
}

void RadioPlayLogic::tune(const CMSetDataRequest& request, int station)
{
    m_station = station;
    sendPlayCommand(m_stations.at(station), QVariantHash());
    request.reply().setValue(QVariant());
}

void RadioPlayLogic::step(const CMSetDataRequest& request, int by)
{
    if (state() == TavuPlayLogicState::Idle)
        return request.reply().setError(error("No station is playing."));
    tune(request, (m_station + by + m_stations.size()) % m_stations.size());
}

void RadioPlayLogic::nextInternal(const CMSetDataRequest& request)
{
    step(request, 1);
}

void RadioPlayLogic::previousInternal(const CMSetDataRequest& request)
{
    step(request, -1);
}

void RadioPlayLogic::likeInternal(const CMSetDataRequest& request)
{
    request.reply().setError(error("Stations are not rated."));
}

void RadioPlayLogic::dislikeInternal(const CMSetDataRequest& request)
{
    likeInternal(request);
}

void RadioPlayLogic::prepareNextMedia()
{
    sendNoNextMediaCommand();
}

TavuPlayLogicData RadioPlayLogic::mediaPlaybackStarted(const TavuRoles&, const TavuRoles&)
{
    TavuPlayLogicControls controls;
    controls.setPause(true);
    controls.setNext(m_stations.size() > 1);
    controls.setPrevious(m_stations.size() > 1);
    TavuPlayLogicData data;
    data.setControls(controls);
    return data;
}
