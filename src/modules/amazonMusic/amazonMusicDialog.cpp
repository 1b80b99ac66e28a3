#include "amazonMusicDialog.h"

#include "amazonMusicLog.h"
#include "cmlistrowsnode.h"
#include "tavuconnect.h"
#include "tavupaths.h"

#include <QDateTime>

namespace {

CMPath newPath()
{
    AMAZON_MUSIC_ENTER();
    return TavuAmazonMusicPrefixPath() + QStringLiteral("dialog/")
        + QString::number(QDateTime::currentMSecsSinceEpoch());
}

TavuRowsRoles listRoles()
{
    AMAZON_MUSIC_ENTER();
    TavuRowsRoles roles;
    roles.setType({ static_cast<int>(TavuRowsRolesType::List) });
    return roles;
}

} // namespace

AmazonMusicDialog::AmazonMusicDialog(CMNodes* nodes, int timeout)
    : m_timer(this)
    , m_node(CMListRowsNode::create(nodes, newPath()))
{
    AMAZON_MUSIC_ENTER();
    m_node->setRowsRoles(listRoles());
    // With the node tree every dialog ends that is still there.
    tavuConnect(m_node, SIGNAL(destroyed()), this, SLOT(deleteLater()), Qt::AutoConnection);
    m_timer.setSingleShot(true);
    m_timer.setInterval(timeout);
    tavuConnect(&m_timer, SIGNAL(timeout()), this, SLOT(on_timeout()), Qt::AutoConnection);
    m_timer.start();
}

AmazonMusicDialog::~AmazonMusicDialog()
{
    AMAZON_MUSIC_ENTER();
    removeNode();
}

void AmazonMusicDialog::addRow(const TavuRoles& row)
{
    AMAZON_MUSIC_ENTER();
    if (m_node)
        m_node->rowsAppend(row);
}

CMPath AmazonMusicDialog::path() const
{
    AMAZON_MUSIC_ENTER();
    return m_node ? m_node->path() : CMPath();
}

void AmazonMusicDialog::on_timeout()
{
    AMAZON_MUSIC_ENTER();
    removeNode();
    QObject::deleteLater();
}

void AmazonMusicDialog::removeNode()
{
    AMAZON_MUSIC_ENTER();
    if (m_node)
        m_node->deleteLater();
    m_node.clear();
}
