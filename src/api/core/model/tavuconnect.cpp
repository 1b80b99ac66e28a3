#include "tavuconnect.h"

#include "cmrequest.h"
#include "tavuroles.h"
#include "tavurowsroles.h"
#include "tavuurl.h"
#include "tavuvalue.h"

QMetaObject::Connection tavuConnect(const QObject* sender, const char* signal,
    const QObject* receiver, const char* slot, Qt::ConnectionType type)
{
    QMetaObject::Connection connection = QObject::connect(sender, signal, receiver, slot, type);
    Q_ASSERT_X(connection, "tavuConnect", slot);
    return connection;
}

void tavuRegisterMetaTypes()
{
    qRegisterMetaType<CMPath>("CMPath");
    qRegisterMetaType<CMRequest>("CMRequest");
    qRegisterMetaType<CMGetRowsRequest>("CMGetRowsRequest");
    qRegisterMetaType<CMSetDataRequest>("CMSetDataRequest");
    qRegisterMetaType<CMGetDataRequest>("CMGetDataRequest");
    qRegisterMetaType<CMMatchRowRequest>("CMMatchRowRequest");
    qRegisterMetaType<CMVoidReply>("CMVoidReply");
    qRegisterMetaType<CMReply<QVariant>>("CMReply<QVariant>");
    qRegisterMetaType<TavuHash>("TavuHash");
    qRegisterMetaType<TavuRoles>("TavuRoles");
    qRegisterMetaType<TavuRowsRoles>("TavuRowsRoles");
    qRegisterMetaType<TavuUrl>("TavuUrl");
    qRegisterMetaType<TavuValue>("TavuValue");
}
