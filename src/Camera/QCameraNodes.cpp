// Features by name, over the node map; the program's only way to a camera's registers.
#include "Camera/QCamera.h"

#include "Camera/QCameraNodeAccess.h"

#include <QDataStream>
#include <QFile>
#include <algorithm>
#include <cstring>

using GenApi_3_0::IBoolean;
using GenApi_3_0::ICommand;
using GenApi_3_0::IEnumeration;
using GenApi_3_0::IFloat;
using GenApi_3_0::IInteger;
using GenApi_3_0::INode;
using GenApi_3_0::IString;

namespace {

// As strncpy: the text, cut at `length`, the rest zeros.
void CopyText(const GenICam_3_0::gcstring& from, char* to, int length) {
    if (length > 0)
        std::strncpy(to, from.c_str(), static_cast<size_t>(length));
}

// Exactly `length` bytes: the text and zeros.
void CopySymbol(const GenICam_3_0::gcstring& from, char* to, int length) {
    const size_t room = length > 0 ? static_cast<size_t>(length) : 0;
    const size_t used = std::min(room, from.length());
    std::memcpy(to, from.c_str(), used);
    std::memset(to + used, 0, room - used);
}

// A limit such as 0.1 is no float: the nearest one lies beyond it and would be refused, although it is what a
// reader was told as the limit. So a float that is a limit's own rounding stands for that limit.
void WriteFloat(IFloat& node, float value) {
    try {
        node.SetValue(static_cast<double>(value), true);
    } catch (const GenICam_3_0::OutOfRangeException&) {
        for (const double limit : {node.GetMax(), node.GetMin()}) {
            if (NarrowToFloat(limit) == value) {
                node.SetValue(limit, true);
                return;
            }
        }
        throw;
    }
}

} // namespace

// --- the two roads to a node
// ------------------------------------------------------------------------------------------------

// A reader records nothing: the caller only learns that no value came.
template<typename Interface, typename Use>
int QCamera::ReadNode(const char* name, Use use) {
    if (!name)
        return 0;
    const std::shared_lock<std::shared_mutex> lock(m_nodeMapMutex);
    if (!m_pNodeMap)
        return 0;
    try {
        auto* node = dynamic_cast<Interface*>(m_pNodeMap->_GetNode(name));
        return node && use(*node) ? 1 : 0;
    } catch (...) {
        return 0;
    }
}

template<typename Interface, typename Use>
int QCamera::WriteNode(const char* name, Use use) {
    if (!name)
        return 0;
    const std::shared_lock<std::shared_mutex> lock(m_nodeMapMutex);
    if (!m_pNodeMap)
        return 0;
    try {
        auto* node = dynamic_cast<Interface*>(m_pNodeMap->_GetNode(name));
        if (!node)
            return 0;
        use(*node);
        return 1;
    } catch (const GenICam_3_0::GenericException& error) {
        SetLastErrorRemark(GenericRemark(error));
    } catch (int number) {
        SetLastErrorRemark(IntegerRemark(number));
    } catch (...) {
        SetLastErrorRemark(UnknownRemark());
    }
    return 0;
}

void QCamera::SetLastErrorRemark(const QString& remark) {
    const QByteArray bytes = remark.toUtf8();
    const std::lock_guard<std::mutex> lock(m_remarkMutex);
    m_lastErrorRemark.fill('\0');
    std::memcpy(m_lastErrorRemark.data(), bytes.constData(),
                std::min(static_cast<size_t>(bytes.size()), m_lastErrorRemark.size() - 1));
}

char* QCamera::GetLastErrorRemark(char* buffer, int length) const {
    const std::lock_guard<std::mutex> lock(m_remarkMutex);
    const size_t used = std::strlen(m_lastErrorRemark.data());
    if (!buffer || used == 0 || length <= static_cast<int>(used))
        return nullptr;
    std::strncpy(buffer, m_lastErrorRemark.data(),
                 std::min(m_lastErrorRemark.size(), static_cast<size_t>(length)));
    return buffer;
}

// --- readers
// ----------------------------------------------------------------------------------------------------------------

int QCamera::GetBooleanNodePropertyValue(const char* name, int* value) {
    if (!value)
        return 0;
    return ReadNode<IBoolean>(name, [value](IBoolean& node) {
        *value = node.GetValue(false) ? 1 : 0;
        return true;
    });
}

int QCamera::GetIntegerNodePropertyValue(const char* name, long long* value) {
    if (!value)
        return 0;
    return ReadNode<IInteger>(name, [value](IInteger& node) {
        *value = node.GetValue();
        return true;
    });
}

int QCamera::GetIntegerNodePropertyValue(const char* name, long long* value, long long* maximum,
                                         long long* minimum) {
    if (!value || !maximum || !minimum)
        return 0;
    return ReadNode<IInteger>(name, [=](IInteger& node) {
        *value = node.GetValue();
        *maximum = node.GetMax();
        *minimum = node.GetMin();
        return *minimum <= *maximum;
    });
}

int QCamera::GetFloatNodePropertyValue(const char* name, float* value) {
    if (!value)
        return 0;
    return ReadNode<IFloat>(name, [value](IFloat& node) {
        *value = NarrowToFloat(node.GetValue());
        return true;
    });
}

int QCamera::GetFloatNodePropertyValue(const char* name, float* value, float* maximum, float* minimum) {
    if (!value || !maximum || !minimum)
        return 0;
    return ReadNode<IFloat>(name, [=](IFloat& node) {
        *value = NarrowToFloat(node.GetValue());
        *maximum = NarrowToFloat(node.GetMax());
        *minimum = NarrowToFloat(node.GetMin());
        return !(*minimum > *maximum);
    });
}

int QCamera::GetEnumerationNodePropertyValue(const char* name, int* value, char* symbol, int length) {
    if (!value)
        return 0;
    return ReadNode<IEnumeration>(name, [=](IEnumeration& node) {
        const int64_t current = node.GetIntValue();
        *value = static_cast<int>(current);
        if (!symbol)
            return true;
        GenApi_3_0::StringList_t symbols;
        node.GetSymbolics(symbols);
        for (const auto& text : symbols) {
            const GenApi_3_0::IEnumEntry* entry = node.GetEntryByName(text);
            // deliberate: the search doesn't stop at the match, so of entries with one value the last one
            // counts.
            if (entry && entry->GetValue() == current)
                CopySymbol(text, symbol, length);
        }
        return true;
    });
}

int QCamera::GetStringRegNodePropertyValue(const char* name, char* text, int length) {
    if (!text)
        return 0;
    return ReadNode<IString>(name, [=](IString& node) {
        CopyText(node.GetValue(), text, length);
        return true;
    });
}

int QCamera::GetStringRegNodePropertyValue(const char* name, char* text, int length, int* maximum) {
    if (!text || !maximum)
        return 0;
    return ReadNode<IString>(name, [=](IString& node) {
        CopyText(node.GetValue(), text, length);
        *maximum = static_cast<int>(node.GetMaxLength());
        return true;
    });
}

int QCamera::GetBaseNodeAccessMode(const char* name, GenApi_3_0::_EAccessMode& mode) {
    return ReadNode<INode>(name, [&mode](INode& node) {
        mode = node.GetAccessMode();
        return true;
    });
}

// --- writers
// ----------------------------------------------------------------------------------------------------------------

int QCamera::SetBooleanNodePropertyValue(const char* name, int value) {
    // Before the write, and whether or not it succeeds: the block in the frames may change from now on. After
    // it again: a frame in between may have brought the former selector back.
    const bool refresh = name && std::strcmp(name, "FrameSpecInfo") == 0;
    if (refresh)
        RefreshEmbeddedInfo();
    const int written =
        WriteNode<IBoolean>(name, [value](IBoolean& node) { node.SetValue(value != 0, true); });
    if (refresh)
        RefreshEmbeddedInfo();
    return written;
}

int QCamera::SetIntegerNodePropertyValue(const char* name, long long value) {
    const bool refresh = name && std::strcmp(name, "FrameSpecInfo_Reg") == 0;
    if (refresh)
        RefreshEmbeddedInfo();
    const int written = WriteNode<IInteger>(name, [value](IInteger& node) { node.SetValue(value, true); });
    if (refresh)
        RefreshEmbeddedInfo();
    return written;
}

int QCamera::SetFloatNodePropertyValue(const char* name, float value) {
    return WriteNode<IFloat>(name, [value](IFloat& node) { WriteFloat(node, value); });
}

int QCamera::SetEnumerationNodePropertyValue(const char* name, int value) {
    return WriteNode<IEnumeration>(name, [value](IEnumeration& node) { node.SetIntValue(value, true); });
}

int QCamera::SetStringRegNodePropertyValue(const char* name, const char* text) {
    if (!text)
        return 0;
    return WriteNode<IString>(name, [text](IString& node) { node.SetValue(text, true); });
}

int QCamera::SetCommandNodePropertyValue(const char* name) {
    return WriteNode<ICommand>(name, [](ICommand& node) { node.Execute(true); });
}

// --- helpers built on them
// --------------------------------------------------------------------------------------------------

int QCamera::GetActualLineRate(int& rate) {
    long long value = 0;
    const int read = GetResultLineRate(&value);
    if (read)
        rate = static_cast<int>(value);
    return read;
}

int QCamera::GetCameraPacketSize() {
    long long value = 0;
    return GetIntegerNodePropertyValue("GevSCPSPacketSize", &value) ? static_cast<int>(value) : -1;
}

bool QCamera::IsSuperSpeed() {
    long long value = 0;
    return !GetIntegerNodePropertyValue("DeviceLinkSpeed", &value) || value > 999;
}

uint32_t QCamera::GetCamScanType() {
    int value = 0;
    return GetEnumerationNodePropertyValue("DeviceScanType", &value) ? static_cast<uint32_t>(value)
                                                                     : UINT32_MAX;
}

int QCamera::GetPixelSize(int& size) {
    return GetEnumerationNodePropertyValue("PixelSize", &size);
}

int QCamera::GetTriggerMode(int& mode) {
    char symbol[128] = {};
    const int read = GetEnumerationNodePropertyValue("TriggerMode", &mode, symbol, sizeof symbol);
    if (read)
        mode = NumberOfSymbol(symbol, {{"On", 1}, {"Off", 0}}, mode);
    return read;
}

int QCamera::GetAcquisitionMode(int& mode) {
    char symbol[128] = {};
    const int read = GetEnumerationNodePropertyValue("AcquisitionMode", &mode, symbol, sizeof symbol);
    if (read)
        mode = NumberOfSymbol(symbol, {{"Continuous", 2}, {"SingleFrame", 0}, {"MultiFrame", 1}}, mode);
    return read;
}

int QCamera::GetCurPixelFormat(OvGvspPixelType& format) {
    format = OV_GVSP_NONE;
    int value = 0;
    if (GetEnumerationNodePropertyValue("ImageCompressionMode", &value) && value == 1) {
        format = OV_GVSP_JPEG;
        return 1;
    }
    if (!GetEnumerationNodePropertyValue("PixelFormat", &value))
        return 0;
    // The enumeration's values are the GVSP codes; unsigned, as vendor codes have the top bit set.
    format = static_cast<OvGvspPixelType>(static_cast<uint32_t>(value));
    return 1;
}

int QCamera::GetCheckPacketSize() {
    if (!m_pHandle)
        return -1;
    const int optimum = OV_CC_GetOptimalPacketSize(m_pHandle);
    int increment = 1;
    long long value = 0;
    long long maximum = 0;
    long long minimum = 0;
    if (!GetPincNode("GevSCPSPacketSize", increment) ||
        !GetIntegerNodePropertyValue("GevSCPSPacketSize", &value, &maximum, &minimum))
        return -1;
    return static_cast<int>(PacketSizeOnGrid(optimum, increment, maximum, minimum));
}

// The increment as the XML tells it, without asking the node map. Walks the whole document: for rare use.
bool QCamera::GetPincNode(const char* name, int& increment) {
    if (!name)
        return false;
    QList<QPair<QString, QString>> candidates; // tag and text of "Inc" and "pInc" children, in order
    {
        const std::lock_guard<std::mutex> lock(m_elementMutex);
        m_elements.clear();
        GenerateDomElementMap(m_document.documentElement());
        QDomElement element;
        if (!GetDomElementNode(QString::fromUtf8(name), element))
            return false;
        for (QDomElement child = element.firstChildElement(); !child.isNull();
             child = child.nextSiblingElement())
            if (child.tagName() == "Inc" || child.tagName() == "pInc")
                candidates.append({child.tagName(), child.text()});
    }
    for (const auto& [tag, text] : candidates) {
        if (tag == "Inc") {
            increment = IntegerOfText(text);
            return true;
        }
        long long value = 0;
        if (GetIntegerNodePropertyValue(text.toUtf8().constData(), &value)) {
            increment = static_cast<int>(value);
            return true;
        }
    }
    return false;
}

void QCamera::GenerateDomElementMap(const QDomElement& element) {
    for (QDomElement child = element.firstChildElement(); !child.isNull();
         child = child.nextSiblingElement()) {
        if (child.tagName() == "EnumEntry")
            continue;
        const QString name = child.attribute("Name");
        if (!name.isEmpty())
            m_elements[name] = child;
        GenerateDomElementMap(child);
    }
}

bool QCamera::GetDomElementNode(const QString& name, QDomElement& element) const {
    const auto found = m_elements.constFind(name);
    if (found == m_elements.constEnd())
        return false;
    element = found.value();
    return !element.isNull();
}

uint32_t QCamera::XML_TLParamsLock(bool lock) {
    const std::shared_lock<std::shared_mutex> guard(m_nodeMapMutex);
    if (!m_pNodeMap)
        return 0;
    try {
        auto* node = dynamic_cast<IInteger*>(m_pNodeMap->_GetNode("TLParamsLocked"));
        if (!node)
            return OV_STATUS_GENICAM_GENERIC;
        node->SetValue(lock ? 1 : 0, true);
    } catch (...) {
        // deliberate: a camera that refuses it streams all the same.
        return 0;
    }
    return 0;
}

bool QCamera::SaveGenIcamXml(const QString& path) {
    QFile file(path);
    const bool opened = file.open(QIODevice::WriteOnly);
    if (!file.exists() || !opened || !m_pXml)
        return false;
    QDataStream stream(&file);
    stream.writeRawData(m_pXml.get(), static_cast<int>(m_nXmlLength));
    file.close();
    return true;
}

void QCamera::GetXMLDomDocument(QDomDocument& document) const {
    const std::lock_guard<std::mutex> lock(m_elementMutex);
    document = m_document;
}

std::shared_ptr<GenApi_3_0::CNodeMapRef> QCamera::GetNodeMapRef() const {
    const std::shared_lock<std::shared_mutex> lock(m_nodeMapMutex);
    return m_pNodeMap;
}
