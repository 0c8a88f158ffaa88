#pragma once
/// Smart pointers that ask a node for an interface. They own nothing: the node map does. Assigning a node
/// that has another interface gives an invalid pointer; using one throws LogicalErrorException.
#include <cstddef>
#include <type_traits>

#include "Base/GCException.h"
#include "GenApi/IBoolean.h"
#include "GenApi/ICategory.h"
#include "GenApi/ICommand.h"
#include "GenApi/IDestroy.h"
#include "GenApi/IDeviceInfo.h"
#include "GenApi/IEnumEntry.h"
#include "GenApi/IEnumeration.h"
#include "GenApi/IFloat.h"
#include "GenApi/IInteger.h"
#include "GenApi/INode.h"
#include "GenApi/INodeMap.h"
#include "GenApi/IPort.h"
#include "GenApi/IRegister.h"
#include "GenApi/ISelector.h"
#include "GenApi/IString.h"

namespace GenApi_3_0 {

/// The number by which a node can be asked for an interface (INode::TryInterface); -1: there is none.
template<class T>
struct CInterfaceNumber : std::integral_constant<int, -1> {};
template<>
struct CInterfaceNumber<IValue> : std::integral_constant<int, intfIValue> {};
template<>
struct CInterfaceNumber<IInteger> : std::integral_constant<int, intfIInteger> {};
template<>
struct CInterfaceNumber<IFloat> : std::integral_constant<int, intfIFloat> {};
template<>
struct CInterfaceNumber<IBoolean> : std::integral_constant<int, intfIBoolean> {};
template<>
struct CInterfaceNumber<ICommand> : std::integral_constant<int, intfICommand> {};
template<>
struct CInterfaceNumber<IString> : std::integral_constant<int, intfIString> {};
template<>
struct CInterfaceNumber<IRegister> : std::integral_constant<int, intfIRegister> {};
template<>
struct CInterfaceNumber<ICategory> : std::integral_constant<int, intfICategory> {};
template<>
struct CInterfaceNumber<IEnumeration> : std::integral_constant<int, intfIEnumeration> {};
template<>
struct CInterfaceNumber<IEnumEntry> : std::integral_constant<int, intfIEnumEntry> {};

template<class T, class B = IBase>
class CPointer {
public:
    CPointer() = default;
    CPointer(B* base) // NOLINT(google-explicit-constructor): published as a conversion
        : m_pointer(dynamic_cast<T*>(base)) {}
    template<class N, std::enable_if_t<std::is_same_v<N, INode> && std::is_same_v<B, IBase>, int> = 0>
    CPointer(N* node) // NOLINT(google-explicit-constructor): published as a conversion
        : m_pointer(ask(node)) {}
    CPointer& operator=(B* base) { return *this = CPointer(base); }
    template<class N, std::enable_if_t<std::is_same_v<N, INode> && std::is_same_v<B, IBase>, int> = 0>
    CPointer& operator=(N* node) {
        return *this = CPointer(node);
    }

    /// Null when invalid.
    operator T*() const noexcept { return m_pointer; } // NOLINT(google-explicit-constructor): published
    T& operator*() const { return *checked(); }
    T& operator()() const { return *checked(); }
    T* operator->() const { return checked(); }
    bool IsValid() const noexcept { return m_pointer != nullptr; }
    explicit operator bool() const noexcept { return IsValid(); }
    bool operator==(const CPointer& other) const noexcept { return m_pointer == other.m_pointer; }
    bool operator!=(const CPointer& other) const noexcept { return m_pointer != other.m_pointer; }
    bool operator==(std::nullptr_t) const noexcept { return m_pointer == nullptr; }
    bool operator!=(std::nullptr_t) const noexcept { return m_pointer != nullptr; }

private:
    T* checked() const {
        if (m_pointer == nullptr)
            throw LOGICAL_ERROR_EXCEPTION(
                "an invalid node pointer is used: no such node, or it has another interface");
        return m_pointer;
    }

    static T* ask(INode* node) {
        if constexpr (CInterfaceNumber<T>::value >= 0) {
            void* found = nullptr;
            if (node != nullptr &&
                node->TryInterface(static_cast<EInterfaceType>(CInterfaceNumber<T>::value), found))
                return static_cast<T*>(found);
        }
        return dynamic_cast<T*>(node);
    }

    T* m_pointer = nullptr;
};

using CBasePtr = CPointer<IBase>;
using CNodePtr = CPointer<INode>;
using CValuePtr = CPointer<IValue>;
using CIntegerPtr = CPointer<IInteger>;
using CFloatPtr = CPointer<IFloat>;
using CBooleanPtr = CPointer<IBoolean>;
using CEnumerationPtr = CPointer<IEnumeration>;
using CEnumEntryPtr = CPointer<IEnumEntry>;
using CStringPtr = CPointer<IString>;
using CCommandPtr = CPointer<ICommand>;
using CRegisterPtr = CPointer<IRegister>;
using CCategoryPtr = CPointer<ICategory>;
using CSelectorPtr = CPointer<ISelector>;
using CPortPtr = CPointer<IPort>;
using CPortConstructPtr = CPointer<IPortConstruct>;
using CNodeMapPtr = CPointer<INodeMap, INodeMap>;
using CDeviceInfoPtr = CPointer<IDeviceInfo, INodeMap>;
using CDestroyPtr = CPointer<IDestroy, INodeMap>;

} // namespace GenApi_3_0
