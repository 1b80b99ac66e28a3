#pragma once

#include <QObject>
#include <QString>
#include <QVector>

#include <memory>
#include <thread>

using GstElement = struct _GstElement;

namespace player {

/// Something that sound can be sent to.
struct OutputDevice
{
    QString id; ///< What the output setting names it by.
    QString name; ///< For people.
};

/// The sound devices of the machine, followed from the first question on.
class OutputDevices : public QObject
{
    Q_OBJECT

public:
    explicit OutputDevices(QObject* parent = nullptr);
    ~OutputDevices() override;

    /// The devices known so far. The first call begins to look for them.
    QVector<OutputDevice> devices();

Q_SIGNALS:
    void devicesChanged();

private:
    struct Monitor;

    void look();
    void take(const QVector<OutputDevice>& devices);

    std::unique_ptr<Monitor> m_monitor;
    QVector<OutputDevice> m_devices;
    std::thread m_looking; // Asking the sound servers takes its time.
};

/// How the ids of devices begin.
QString outputDevicePrefix();
/// The sink of a device, a floating reference; null when the device is not there.
GstElement* makeDeviceSink(const QString& id);

} // namespace player
