#include "cmvalueitem.h"

#include "cmroot.h"
#include "tavuconnect.h"

CMValueItem::CMValueItem(QObject* parent, const CMPath& path, QObject* receiver, const char* slot,
    Qt::ConnectionType type)
    : QObject(parent)
    , m_path(path)
{
    tavuConnect(this, SIGNAL(valueChanged(TavuValue)), receiver, slot, type);
    CMRoot()->connectValueChange(path, this, SLOT(on_published(TavuValue)), Qt::AutoConnection);
    QMetaObject::invokeMethod(
        this, [this] { deliverPresent(); }, Qt::QueuedConnection);
}

void CMValueItem::on_published(const TavuValue& value)
{
    m_delivered = true;
    Q_EMIT valueChanged(value);
}

void CMValueItem::deliverPresent()
{
    // A publication that came first has already told the newer value.
    if (m_delivered)
        return;
    const QVariant present = CMRoot()->getValue(m_path);
    if (present.isValid())
        on_published(TavuValue(present.toHash()));
}
