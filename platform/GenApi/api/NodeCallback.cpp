#include "GenApi/NodeCallback.h"

#include <memory>

#include "Base/GCException.h"
#include "GenApi/INode.h"

namespace GenApi_3_0 {

CallbackHandleType Register(INode* node, std::function<void(INode*)> function, ECallbackType type) {
    if (node == nullptr)
        throw LOGICAL_ERROR_EXCEPTION("a callback is to be registered at no node");
    return node->RegisterCallback(new CFunctionCallback(node, std::move(function), type));
}

void Deregister(CallbackHandleType handle) {
    if (handle != nullptr && handle->GetNode() != nullptr)
        handle->GetNode()->DeregisterCallback(handle);
}

} // namespace GenApi_3_0
