#include "cmnode.h"

#include "cmdispatch.h"
#include "cmnodes.h"

CMNode::CMNode(const CMPath& path)
    : m_path(path.withoutParams())
{
}

CMNode::~CMNode()
{
    setNodes(nullptr);
}

void CMNode::setNodes(CMNodes* nodes)
{
    if (m_nodes)
        m_nodes->remove(this);
    m_nodes = nodes;
    if (m_nodes)
        m_nodes->add(this);
}

void CMNode::deleteLater()
{
    setNodes(nullptr);
    CMValueNode::deleteLater();
}

void CMNode::request(const CMRequest& request)
{
    cmDispatch(request, this);
}

void CMNode::getDataRequest(const CMGetDataRequest& request)
{
    refuse(request);
}

void CMNode::getRowsRequest(const CMGetRowsRequest& request)
{
    refuse(request);
}

void CMNode::matchRowRequest(const CMMatchRowRequest& request)
{
    refuse(request);
}

void CMNode::setDataRequest(const CMSetDataRequest& request)
{
    refuse(request);
}

void CMNode::valuePathAdd(const CMPath&) { }

void CMNode::valuePathRemove(const CMPath&) { }

void CMNode::dataPathAdd(const CMPath&) { }

void CMNode::dataPathRemove(const CMPath&) { }

void CMNode::rowsPathAdd(const CMPath&) { }

void CMNode::rowsPathRemove(const CMPath&) { }

void CMNode::notifyData()
{
    if (m_nodes)
        m_nodes->subscribe()->notifyData(m_path);
}

void CMNode::notifyRows()
{
    if (m_nodes)
        m_nodes->subscribe()->notifyRows(m_path);
}

void CMNode::refuse(const CMRequest& request)
{
    request.voidReply().setError(CMError(
        TrString(TrCharData(trExtractContext("CMNode"), "%1 does not answer such a request."),
            { m_path.text() })));
}
