#pragma once
/// Callbacks that run when a node became invalid: its own value was written, something that it depends on
/// was, it was polled, or it was invalidated by hand. Each runs once for one operation, on the thread of that
/// operation; what it throws is swallowed, so that one listener can't keep the others from hearing.
/// Deregistering on another thread while the callback runs doesn't wait for its end; the callback object
/// itself stays until then.
#include <functional>
#include <utility>

#include "GenApi/IBase.h"

namespace GenApi_3_0 {

class INode;
class CNodeCallback;

/// Names a registered callback until it is deregistered.
using CallbackHandleType = CNodeCallback*;

class GENAPI_API CNodeCallback {
public:
    CNodeCallback(INode* node, ECallbackType type) : m_node(node), m_type(type) {}
    CNodeCallback(const CNodeCallback&) = delete;
    CNodeCallback& operator=(const CNodeCallback&) = delete;
    virtual ~CNodeCallback() = default;

    /// Called once per operation and type; does its work when `type` is its own.
    virtual void operator()(ECallbackType type) const = 0;
    INode* GetNode() const { return m_node; }
    ECallbackType GetCallbackType() const { return m_type; }

private:
    INode* m_node;
    ECallbackType m_type;
};

/// A callback made from anything that can be called with the node.
class GENAPI_API CFunctionCallback final : public CNodeCallback {
public:
    CFunctionCallback(INode* node, std::function<void(INode*)> function, ECallbackType type)
        : CNodeCallback(node, type), m_function(std::move(function)) {}
    void operator()(ECallbackType type) const override {
        if (type == GetCallbackType())
            m_function(GetNode());
    }

private:
    std::function<void(INode*)> m_function;
};

/// Registers a function or a function object; the node owns what is registered. Throws LogicalErrorException
/// for a null node.
GENAPI_API CallbackHandleType Register(INode* node, std::function<void(INode*)> function,
                                       ECallbackType type = cbPostInsideLock);

/// Registers a member function of an object that must outlive the registration.
template<class Client, class Member>
CallbackHandleType Register(INode* node, Client& client, Member member,
                            ECallbackType type = cbPostInsideLock) {
    return Register(
        node, [&client, member](INode* changed) { (client.*member)(changed); }, type);
}

/// Ends a registration. A null handle is ignored.
GENAPI_API void Deregister(CallbackHandleType handle);

} // namespace GenApi_3_0
