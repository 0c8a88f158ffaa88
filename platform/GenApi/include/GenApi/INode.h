#pragma once
/// What every node tells of itself, whatever its kind. All calls may come from any thread. Texts are as the
/// XML gives them. A node lives as long as its node map.
#include "GenApi/Container.h"
#include "GenApi/IBase.h"
#include "GenApi/NodeCallback.h"

namespace GenApi_3_0 {

class INodeMap;

class GENAPI_API INode : public virtual IBase {
public:
    /// With `FullQualified` led by the name space: "Std::Width" or "Cust::Width".
    virtual GenICam_3_0::gcstring GetName(bool FullQualified = false) const = 0;
    virtual ENameSpace GetNameSpace() const = 0;
    virtual EVisibility GetVisibility() const = 0;
    /// The next read goes to the camera, for this node and all that depend on it; callbacks run.
    virtual void InvalidateNode() = 0;
    /// Whether reading can be answered without the camera.
    virtual bool IsCachable() const = 0;
    virtual EYesNo IsAccessModeCacheable() const = 0;
    virtual ECachingMode GetCachingMode() const = 0;
    /// In milliseconds; -1 when the node isn't polled.
    virtual int64_t GetPollingTime() const = 0;
    virtual GenICam_3_0::gcstring GetToolTip() const = 0;
    virtual GenICam_3_0::gcstring GetDescription() const = 0;
    /// The name when the XML has no display name.
    virtual GenICam_3_0::gcstring GetDisplayName() const = 0;
    /// The name given to the node map when it was made.
    virtual GenICam_3_0::gcstring GetDeviceName() const = 0;
    virtual void GetChildren(NodeList_t& Children, ELinkType LinkType = ctReadingChildren) const = 0;
    virtual void GetParents(NodeList_t& Parents) const = 0;
    /// Takes the callback over. See NodeCallback.h.
    virtual CallbackHandleType RegisterCallback(CNodeCallback* pCallback) = 0;
    /// False for a handle that isn't registered at this node.
    virtual bool DeregisterCallback(CallbackHandleType hCallback) = 0;
    virtual INodeMap* GetNodeMap() const = 0;
    /// Empty when the node belongs to no event.
    virtual GenICam_3_0::gcstring GetEventID() const = 0;
    /// Whether the value belongs to a stored set of the camera's settings.
    virtual bool IsStreamable() const = 0;
    /// Names of the properties (XML elements and attributes) that the node has.
    virtual void GetPropertyNames(GenICam_3_0::gcstring_vector& PropertyNames) const = 0;
    /// The property's text; several of one name are separated by tabs. `AttributeStr` gets the texts of the
    /// elements' own attribute (a variable's name, an offset) likewise. False when the node has no such
    /// property.
    virtual bool GetProperty(const GenICam_3_0::gcstring& PropertyName, GenICam_3_0::gcstring& ValueStr,
                             GenICam_3_0::gcstring& AttributeStr) const = 0;
    /// Narrows the access mode from outside; RW takes it back.
    virtual void ImposeAccessMode(EAccessMode ImposedAccessMode) = 0;
    /// Narrows the visibility from outside; Beginner takes it back.
    virtual void ImposeVisibility(EVisibility ImposedVisibility) = 0;
    /// A node that describes the same feature in another way, or null.
    virtual INode* GetAlias() const = 0;
    /// A node that has the same feature with another interface, or null.
    virtual INode* GetCastAlias() const = 0;
    virtual GenICam_3_0::gcstring GetDocuURL() const = 0;
    virtual bool IsDeprecated() const = 0;
    virtual EInterfaceType GetPrincipalInterfaceType() const = 0;
    /// Whether a category lists the node.
    virtual bool IsFeature() const = 0;
    /// Not of the published interface: lets CPointer do without a dynamic_cast, which takes longer than all
    /// the rest of reading a cached value. Gives the node's interface of that type, as a pointer to just that
    /// type, or null when it has none. False: the node doesn't say, and is to be asked by dynamic_cast.
    virtual bool TryInterface(EInterfaceType, void*&) { return false; }
};

} // namespace GenApi_3_0
