#include "tavuconnect.h"

#include "cmrequest.h"
#include "printers.h"
#include "tavuvalue.h"
#include "watchdog.h"

#include <gtest/gtest.h>

namespace {

class Sender : public QObject
{
    Q_OBJECT

Q_SIGNALS:
    void happened(int number);
    void published(const TavuValue& value);
};

class Receiver : public QObject
{
    Q_OBJECT

public:
    QList<int> numbers;

public Q_SLOTS:
    void hear(int number) { numbers.append(number); }
    void take(const TavuValue& value) { numbers.append(value.i32()); }
};

class TavuConnect : public ::testing::Test
{
protected:
    Sender m_sender;
    Receiver m_receiver;
};

TEST_F(TavuConnect, connects_by_signature_strings)
{
    const auto connection = tavuConnect(
        &m_sender, SIGNAL(happened(int)), &m_receiver, SLOT(hear(int)), Qt::DirectConnection);
    EXPECT_TRUE(connection);
    Q_EMIT m_sender.happened(3);
    EXPECT_EQ(m_receiver.numbers, QList<int>{ 3 });
}

TEST_F(TavuConnect, takes_signatures_in_their_prefixed_and_unnormalised_form)
{
    tavuConnect(&m_sender, "2happened( int )", &m_receiver, "1hear( int)", Qt::DirectConnection);
    tavuConnect(&m_sender, "2published(const TavuValue &)", &m_receiver,
        "1take( const TavuValue& )", Qt::DirectConnection);
    Q_EMIT m_sender.happened(4);
    Q_EMIT m_sender.published(TavuValue::fromI32(5));
    EXPECT_EQ(m_receiver.numbers, (QList<int>{ 4, 5 }));
}

TEST_F(TavuConnect, keeps_to_the_connection_type)
{
    tavuRegisterMetaTypes();
    tavuConnect(&m_sender, SIGNAL(published(TavuValue)), &m_receiver, SLOT(take(TavuValue)),
        Qt::QueuedConnection);
    Q_EMIT m_sender.published(TavuValue::fromI32(6));
    EXPECT_TRUE(m_receiver.numbers.isEmpty());
    EXPECT_TRUE(waitUntil([&] { return m_receiver.numbers == QList<int>{ 6 }; }));
}

TEST_F(TavuConnect, registers_every_type_that_travels)
{
    tavuRegisterMetaTypes();
    tavuRegisterMetaTypes();
    for (const char* type : { "CMPath", "CMRequest", "CMGetRowsRequest", "CMSetDataRequest",
             "CMGetDataRequest", "CMMatchRowRequest", "CMVoidReply", "CMReply<QVariant>",
             "TavuHash", "TavuRoles", "TavuRowsRoles", "TavuUrl", "TavuValue" })
        EXPECT_NE(QMetaType::type(type), int(QMetaType::UnknownType)) << type;
}

using TavuConnectDeathTest = TavuConnect;

TEST_F(TavuConnectDeathTest, a_signature_that_an_object_lacks_stops_the_process)
{
    EXPECT_DEATH(tavuConnect(&m_sender, SIGNAL(happened(int)), &m_receiver, SLOT(missing(int)),
                     Qt::DirectConnection),
        "tavuConnect.*missing\\(int\\)");
    EXPECT_DEATH(tavuConnect(&m_sender, SIGNAL(missing()), &m_receiver, SLOT(hear(int)),
                     Qt::DirectConnection),
        "tavuConnect");
}

} // namespace

#include "tavuconnecttest.moc"
