#pragma once

#include "cmrequest.h"

/// Hands a request to the operation of `receiver` for its type.
template <class Receiver>
void cmDispatch(const CMRequest& request, Receiver* receiver)
{
    switch (request.type()) {
    case CMRequestType::GetRows:
        return receiver->getRowsRequest(CMGetRowsRequest(request));
    case CMRequestType::SetData:
        return receiver->setDataRequest(CMSetDataRequest(request));
    case CMRequestType::GetData:
        return receiver->getDataRequest(CMGetDataRequest(request));
    case CMRequestType::MatchRow:
        return receiver->matchRowRequest(CMMatchRowRequest(request));
    }
}
