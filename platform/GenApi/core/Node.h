#pragma once
/// What all nodes have in common: their place in the map, access mode, caches, callbacks, and the protocol by
/// which nodes read and write one another.
///
/// Names tell which side of the lock an operation is on. Operations of the published interface begin with a
/// capital: they may be called from any thread and take the map's lock for their duration. Operations that
/// begin with a small letter are the inside and expect the lock to be held.
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "Base/GCException.h"
#include "GenApi/INode.h"
#include "core/Description.h"

namespace genapi {

class NodeMap;
class Linker;

/// Which access mode is asked for. Readable leaves locks out: they never take away reading, and two features
/// may lock each other without either mode depending on itself.
enum class Aspect : std::uint8_t { Readable, Full };

/// What is being written to a node, for texts that operators see; nothing for plain bytes and for commands. A
/// text must outlive it.
using Written = std::variant<std::monostate, std::int64_t, double, const std::string*>;

struct Reading {
    bool ignoreCache = false;
};

class Node : public GenApi_3_0::INode {
public:
    Node(NodeMap& map, const NodeRecord& record, const Property* properties, std::uint32_t index);
    Node(const Node&) = delete;
    Node& operator=(const Node&) = delete;
    ~Node() override;

    // INode and IBase.
    GenApi_3_0::EAccessMode GetAccessMode() const override;
    GenICam_3_0::gcstring GetName(bool FullQualified) const override;
    GenApi_3_0::ENameSpace GetNameSpace() const override;
    GenApi_3_0::EVisibility GetVisibility() const override;
    void InvalidateNode() override;
    bool IsCachable() const override;
    GenApi_3_0::EYesNo IsAccessModeCacheable() const override;
    GenApi_3_0::ECachingMode GetCachingMode() const override;
    int64_t GetPollingTime() const override;
    GenICam_3_0::gcstring GetToolTip() const override;
    GenICam_3_0::gcstring GetDescription() const override;
    GenICam_3_0::gcstring GetDisplayName() const override;
    GenICam_3_0::gcstring GetDeviceName() const override;
    void GetChildren(GenApi_3_0::NodeList_t& Children, GenApi_3_0::ELinkType LinkType) const override;
    void GetParents(GenApi_3_0::NodeList_t& Parents) const override;
    GenApi_3_0::CallbackHandleType RegisterCallback(GenApi_3_0::CNodeCallback* pCallback) override;
    bool DeregisterCallback(GenApi_3_0::CallbackHandleType hCallback) override;
    GenApi_3_0::INodeMap* GetNodeMap() const override;
    GenICam_3_0::gcstring GetEventID() const override;
    bool IsStreamable() const override;
    void GetPropertyNames(GenICam_3_0::gcstring_vector& PropertyNames) const override;
    bool GetProperty(const GenICam_3_0::gcstring& PropertyName, GenICam_3_0::gcstring& ValueStr,
                     GenICam_3_0::gcstring& AttributeStr) const override;
    void ImposeAccessMode(GenApi_3_0::EAccessMode ImposedAccessMode) override;
    void ImposeVisibility(GenApi_3_0::EVisibility ImposedVisibility) override;
    GenApi_3_0::INode* GetAlias() const override;
    GenApi_3_0::INode* GetCastAlias() const override;
    GenICam_3_0::gcstring GetDocuURL() const override;
    bool IsDeprecated() const override;
    GenApi_3_0::EInterfaceType GetPrincipalInterfaceType() const override;
    bool IsFeature() const override;
    bool TryInterface(GenApi_3_0::EInterfaceType Type, void*& Interface) final {
        Interface = interfaceOf(Type);
        return true;
    }

    // What never changes after loading; no lock needed.
    NodeMap& map() const { return m_map; }
    std::string_view name() const { return m_name; }
    NodeKind kind() const { return m_kind; }
    std::uint32_t index() const { return m_index; }
    const Property* begin() const { return m_properties; }
    const Property* end() const { return m_properties + m_propertyCount; }
    /// Empty when the node has no such property.
    std::string_view text(PropertyId id) const;
    /// "node 'Width'".
    std::string label() const;
    virtual GenApi_3_0::EInterfaceType interfaceType() const;
    /// A pointer to just the interface of that type; null when the node hasn't it.
    virtual void* interfaceOf(GenApi_3_0::EInterfaceType type);

    // Loading.
    /// Resolves one property after the other; problems become the node's fault.
    virtual void link(Linker& linker, const Property& property);
    /// After the last property: what is missing becomes the node's fault.
    virtual void linked(Linker& linker);
    /// From now on each use throws PropertyException with this text. The first fault stays.
    void setFault(const std::string& what);
    void checkFault() const {
        if (m_fault != nullptr)
            throwFault();
    }
    void setFeature() { m_isFeature = true; }
    /// Appends the nodes that hold this one's value or that it is computed from. For a register none.
    virtual void valueChildren(std::vector<Node*>& children) const;

    // Access.
    GenApi_3_0::EAccessMode mode(Aspect aspect);
    void requireReadable();
    /// `written`: what is to be written, for the text.
    void requireWritable(const Written& written = {});
    /// Whether the condition that this node stands for is met; one that can't be read isn't.
    bool holds();
    bool locked();

    // Numbers. By default a node has none, and each of these throws PropertyException.
    /// Both kinds of numbers are had from each node that has one: integers of floats are rounded.
    virtual std::int64_t readInteger(Reading how);
    virtual double readFloat(Reading how);
    /// `verify` checks range and increment of this node and of the ones that it writes to.
    virtual void writeInteger(std::int64_t value, bool verify);
    virtual void writeFloat(double value, bool verify);
    virtual std::int64_t minInteger();
    virtual std::int64_t maxInteger();
    virtual std::int64_t incInteger();
    virtual double minFloat();
    virtual double maxFloat();
    /// 0 when there is no increment.
    virtual double incFloat();
    /// Null when the valid values are no list.
    virtual const std::vector<std::int64_t>* validIntegers();
    virtual const std::vector<double>* validFloats();
    // As the XML says of this node; undefined or empty when it doesn't.
    virtual GenApi_3_0::ERepresentation representation();
    virtual std::string_view unit();
    virtual GenApi_3_0::EDisplayNotation displayNotation();
    /// -1 when not given.
    virtual std::int64_t displayPrecision();
    /// The number of an enumeration's entry of that name; PropertyException when there is none.
    virtual std::int64_t entryValue(std::string_view symbolic);
    /// The name of an enumeration's entry of that number; empty when there is none.
    virtual std::string_view entryName(std::int64_t value);
    std::int64_t checkedInteger(Reading how = {});
    double checkedFloat(Reading how = {});

    /// Compiles the node's formulas, if it has any and hasn't yet. False when one is wrong.
    virtual bool compile() { return true; }

    // Texts, by default none.
    virtual std::string readText(Reading how);
    virtual void writeText(const std::string& text, bool verify);
    virtual std::int64_t maxTextLength();

    // Caches.
    /// What the node's own description says; how it is with all that it stands on, GetCachingMode tells.
    virtual GenApi_3_0::ECachingMode ownCachingMode() const { return GenApi_3_0::WriteThrough; }
    std::int64_t pollingTime() const;
    /// After a write that seemed to go well: asks the nodes that pError names. Where one reports an error,
    /// forgets what was written and throws RuntimeException with the error's name and number. 0 is no error,
    /// nor is an entry with a name such as "NoError"; a node that can't be read now tells nothing.
    void checkError(const Written& written) {
        if (m_rare)
            for (Node* error : m_rare->errors)
                askForError(*error, written);
    }
    /// Appends the nodes that may hold what was written to this one. For a register: those of the same bytes.
    virtual void addSharers(std::vector<Node*>& nodes) const;
    /// Forgets all that was read.
    void drop() {
        m_valueEpoch = 0;
        m_bytesEpoch = 0;
        m_modeEpoch[0] = 0;
        m_modeEpoch[1] = 0;
    }
    /// Forgets, and lets all below forget, what the node's value is made of; all that depends on it too.
    void invalidate();
    /// Called when the polling time has passed.
    virtual void poll();

protected:
    /// The mode of what the node stands on, without its own conditions.
    virtual GenApi_3_0::EAccessMode chainMode(Aspect aspect);
    /// For chains: what `needed` must allow so that a node that computes with it can be used.
    static GenApi_3_0::EAccessMode neededMode(Node& needed);
    bool valueCached() const;
    /// What was read last while that counts, else what `compute` gives, which is kept where that is allowed.
    /// `cached` is a member of m_cached. Defined with Evaluation, which it needs.
    template<class T, class Compute>
    T cachedRead(T& cached, Reading how, Compute compute);

    [[noreturn]] void throwNoNumber() const;
    [[noreturn]] void throwNoText() const;

    union CachedValue {
        std::int64_t integer;
        double floating;
    };
    CachedValue m_cached = {0};
    std::uint32_t m_valueEpoch = 0; // m_cached is valid when this is the map's epoch
    std::uint32_t m_bytesEpoch = 0; // the same for what a register read

private:
    friend class NodeMap;
    friend class Evaluation;

    // What only few nodes have.
    struct Rare {
        Node* pBlockPolling = nullptr;
        std::vector<Node*> errors; // by pError
        std::vector<std::shared_ptr<GenApi_3_0::CNodeCallback>> callbacks;
    };
    Rare& rare();

    GenApi_3_0::EAccessMode computeMode(Aspect aspect);
    void askForError(Node& error, const Written& written);
    [[noreturn]] void throwFault() const;
    Node* neighbour(PropertyId id) const;
    std::vector<Node*> withValueChildren();

    NodeMap& m_map;
    std::string_view m_name;
    const Property* m_properties;
    const std::string* m_fault = nullptr;
    Node* m_pIsImplemented = nullptr;
    Node* m_pIsAvailable = nullptr;
    Node* m_pIsLocked = nullptr;
    std::unique_ptr<Rare> m_rare; // made when first needed
    std::uint32_t m_propertyCount;
    std::uint32_t m_index;
    std::uint32_t m_modeEpoch[2] = {0, 0}; // by aspect: m_mode is valid when this is the map's mode epoch
    std::uint32_t m_visit = 0;             // the last walk over the dependents that came by
    std::uint16_t m_busy = 0;              // bits of Evaluation::Step that are under way
    NodeKind m_kind;
    std::uint8_t m_mode[2] = {0, 0};
    std::uint8_t m_imposedByXml = GenApi_3_0::RW;
    std::uint8_t m_imposed = GenApi_3_0::RW;
    std::uint8_t m_visibility = GenApi_3_0::Beginner;
    std::uint8_t m_imposedVisibility = GenApi_3_0::Beginner;
    bool m_isFeature = false;
    bool m_pending = false; // waits for its callbacks to run
};

/// Whether nodes of that kind can be asked for a number or a text.
bool isNumber(NodeKind kind);
bool isText(NodeKind kind);

} // namespace genapi
