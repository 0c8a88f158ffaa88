#pragma once
/// All nodes of one camera.
#include "GenApi/Container.h"
#include "GenApi/IPort.h"
#include "GenApi/Synch.h"

namespace GenApi_3_0 {

class GENAPI_API INodeMap {
public:
    virtual void GetNodes(NodeList_t& Nodes) const = 0;
    /// Null when there is none. A name space in front ("Std::", "Cust::") must be the node's own.
    virtual INode* GetNode(const GenICam_3_0::gcstring& Name) const = 0;
    /// Empties all caches; callbacks run.
    virtual void InvalidateNodes() const = 0;
    /// Connects a port to the port node of that name; null disconnects. False when there is no such port
    /// node. The port must stay until it is disconnected or the map is gone.
    virtual bool Connect(IPort* pPort, const GenICam_3_0::gcstring& PortName) const = 0;
    /// The same for the port node "Device".
    virtual bool Connect(IPort* pPort) const = 0;
    virtual GenICam_3_0::gcstring GetDeviceName() const = 0;
    /// Tells that so many milliseconds have passed since the last call; polled nodes whose time has come are
    /// invalidated.
    virtual void Poll(int64_t ElapsedTime) = 0;
    virtual CLock& GetLock() const = 0;
    virtual uint64_t GetNumNodes() const = 0;
    /// Compiles all formulas now; the names of the nodes whose formula is wrong go to `pErrors`, when given.
    /// True when there are none.
    virtual bool ParseSwissKnifes(GenICam_3_0::gcstring_vector* pErrors = nullptr) const = 0;
    virtual ~INodeMap() = default;
};

} // namespace GenApi_3_0
