#pragma once
/// Smart pointers that ask a node for an interface. They own nothing: the node map does. Assigning a node
/// that has another interface gives an invalid pointer; using one throws LogicalErrorException.
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

template<class T, class B = IBase>
class CPointer {
public:
    CPointer() = default;
    CPointer(B* base) // NOLINT(google-explicit-constructor): published as a conversion
        : m_pointer(dynamic_cast<T*>(base)) {}
    CPointer& operator=(B* base) {
        m_pointer = dynamic_cast<T*>(base);
        return *this;
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
