// Where the sound goes, and how loud.
#include "gststreamer.h"

#include "branch.h"
#include "gstruntime.h"
#include "output.h"
#include "pipeline.h"
#include "streamerlog.h"

#include <algorithm>

namespace player {

namespace {

/// The ear's scale to that of the samples.
double volumeFactor(double part)
{
    return part * part * part;
}

} // namespace

StreamFailure GstStreamer::openOutput()
{
    StreamFailure failure;
    if (m_pipeline)
        return failure;
    initGStreamer();
    if (GstElement* sink = makeOutput(m_options.output, failure)) {
        m_pipeline = std::make_unique<Pipeline>(sink, *this);
        applyVolume();
    }
    return failure;
}

CMError GstStreamer::setOutput(const QString& setting)
{
    if (setting == m_options.output)
        return {};
    initGStreamer();
    StreamFailure failure;
    GstElement* sink = makeOutput(setting, failure);
    if (!sink)
        return streamError(QString(), failure);
    m_options.output = setting;
    auto pipeline = std::make_unique<Pipeline>(sink, *this);
    if (!m_item || m_outputLost)
        return {};
    const qint64 where = position();
    close();
    m_pipeline = std::move(pipeline);
    applyVolume();
    reopen(where);
    return {};
}

void GstStreamer::onOutputFailed(const QString& text)
{
    StreamFailure failure;
    failure.kind = StreamFailure::OutputFailed;
    failure.detail = text;
    if (!m_item->started)
        return failPresent(failure);
    m_restingPosition = position();
    loseOutput(failure);
}

void GstStreamer::loseOutput(const StreamFailure& failure)
{
    const CMError error = streamError(m_item->title, failure);
    LOG4CPLUS_WARN(streamerLogger(), error.message());
    const qint64 where = m_restingPosition;
    close();
    m_restingPosition = where;
    m_outputLost = true;
    m_pausedByUser = true;
    report(TavuPlayLogicState::Paused);
    tell(&Streamer::positionChanged, m_item->id, where);
    Q_EMIT outputLost(error);
}

void GstStreamer::setVolume(int percent)
{
    m_volume = std::clamp(percent, 0, 100);
    applyVolume();
}

void GstStreamer::setMuted(bool muted)
{
    m_muted = muted;
    applyVolume();
}

void GstStreamer::setFade(double part)
{
    m_fade = std::clamp(part, 0.0, 1.0);
    applyVolume();
}

void GstStreamer::applyVolume()
{
    if (m_pipeline)
        m_pipeline->setVolume(volumeFactor(m_fade * m_volume / 100.0), m_muted);
}

} // namespace player
