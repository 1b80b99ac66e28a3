#pragma once

#include "cmpath.h"
#include "tavuexport.h"
#include "tavuvalue.h"

#include <QObject>

/// Watches one value of the root worker. The receiver's slot (a signature prefixed with the digit
/// 1, taking a TavuValue) is called once with the present value, from the event loop of the thread
/// that made the item, if there is a value by then; and after that with every publication, of an
/// equal value too. Destroying the item ends it.
class TAVU_EXPORT CMValueItem : public QObject
{
    Q_OBJECT

public:
    CMValueItem(QObject* parent, const CMPath& path, QObject* receiver, const char* slot,
        Qt::ConnectionType type);

Q_SIGNALS:
    void valueChanged(const TavuValue& value);

private Q_SLOTS:
    void on_published(const TavuValue& value);

private:
    void deliverPresent();

    CMPath m_path;
    bool m_delivered = false;
};
