#include "core/Node.h"

#include <algorithm>

#include "core/Evaluation.h"
#include "core/Linker.h"
#include "core/NodeMap.h"
#include "core/NumberText.h"

namespace genapi {

using namespace GenApi_3_0;

Node::Node(NodeMap& map, const NodeRecord& record, const Property* properties, std::uint32_t index)
    : m_map(map)
    , m_name(record.name)
    , m_properties(properties)
    , m_propertyCount(record.propertyCount)
    , m_index(index)
    , m_kind(record.kind) {}

Node::~Node() = default;

bool isNumber(NodeKind kind) {
    switch (kind) {
    case NodeKind::Integer:
    case NodeKind::IntReg:
    case NodeKind::MaskedIntReg:
    case NodeKind::StructEntry:
    case NodeKind::IntSwissKnife:
    case NodeKind::IntConverter:
    case NodeKind::Float:
    case NodeKind::FloatReg:
    case NodeKind::SwissKnife:
    case NodeKind::Converter:
    case NodeKind::Boolean:
    case NodeKind::Enumeration:
    case NodeKind::EnumEntry:
        return true;
    default:
        return false;
    }
}

bool isText(NodeKind kind) {
    return kind == NodeKind::String || kind == NodeKind::StringReg;
}

std::string_view Node::text(PropertyId id) const {
    // The last one counts, as an injected one lies behind what it overlays.
    for (const Property* property = end(); property != begin();)
        if ((--property)->id == id)
            return property->text;
    return {};
}

std::string Node::label() const {
    return "node '" + std::string(m_name) + "'";
}

EInterfaceType Node::interfaceType() const {
    return intfIBase;
}

void* Node::interfaceOf(EInterfaceType) {
    return nullptr;
}

// Loading

Node::Rare& Node::rare() {
    if (!m_rare)
        m_rare = std::make_unique<Rare>();
    return *m_rare;
}

void Node::link(Linker& linker, const Property& property) {
    switch (property.id) {
    case PropertyId::pIsImplemented:
        m_pIsImplemented = linker.number(*this, property);
        break;
    case PropertyId::pIsAvailable:
        m_pIsAvailable = linker.number(*this, property);
        break;
    case PropertyId::pIsLocked:
        m_pIsLocked = linker.number(*this, property);
        break;
    case PropertyId::pBlockPolling:
        rare().pBlockPolling = linker.number(*this, property);
        break;
    case PropertyId::pError:
        if (Node* named = linker.ifThere(property.text); named != nullptr && isNumber(named->kind()))
            rare().errors.push_back(named);
        break;
    case PropertyId::pInvalidator:
        if (Node* source = linker.ifThere(property.text))
            linker.invalidates(*source, *this);
        break;
    case PropertyId::ImposedAccessMode:
        m_imposedByXml = static_cast<std::uint8_t>(linker.accessMode(*this, property));
        break;
    case PropertyId::Visibility:
    case PropertyId::ImposedVisibility:
        m_visibility = std::max(m_visibility, static_cast<std::uint8_t>(linker.visibility(*this, property)));
        break;
    default:
        break;
    }
}

void Node::linked(Linker&) {}

void Node::setFault(const std::string& what) {
    if (m_fault == nullptr)
        m_fault = &m_map.m_faults.emplace_back(label() + ": " + what);
}

void Node::throwFault() const {
    throw PROPERTY_EXCEPTION("%s", m_fault->c_str());
}

void Node::valueChildren(std::vector<Node*>&) const {}

// Access

EAccessMode Node::mode(Aspect aspect) {
    const auto which = static_cast<std::size_t>(aspect);
    if (m_modeEpoch[which] == m_map.modeEpoch())
        return static_cast<EAccessMode>(m_mode[which]);
    checkFault();
    const Evaluation evaluation(*this, aspect == Aspect::Full ? Evaluation::ModeWithLocks : Evaluation::Mode);
    const CacheScope scope(m_map);
    const EAccessMode mode = computeMode(aspect);
    if (scope.cacheable()) {
        m_mode[which] = static_cast<std::uint8_t>(mode);
        m_modeEpoch[which] = m_map.modeEpoch();
    }
    return mode;
}

EAccessMode Node::computeMode(Aspect aspect) {
    if (m_pIsImplemented != nullptr && !m_pIsImplemented->holds())
        return NI;
    EAccessMode mode = chainMode(aspect);
    if (mode == NI)
        return NI;
    if (m_pIsAvailable != nullptr && !m_pIsAvailable->holds())
        return NA;
    if (aspect == Aspect::Full && m_pIsLocked != nullptr && m_pIsLocked->holds())
        mode = Combine(mode, RO);
    mode = Combine(mode, static_cast<EAccessMode>(m_imposedByXml));
    return Combine(mode, static_cast<EAccessMode>(m_imposed));
}

bool Node::holds() {
    return IsReadable(mode(Aspect::Readable)) && readInteger({}) != 0;
}

bool Node::locked() {
    return m_pIsLocked != nullptr && m_pIsLocked->holds();
}

EAccessMode Node::chainMode(Aspect) {
    return RO;
}

EAccessMode Node::neededMode(Node& needed) {
    const EAccessMode mode = needed.mode(Aspect::Readable);
    return mode == NI ? NI : IsReadable(mode) ? RW : NA;
}

namespace {

const char* reason(EAccessMode mode) {
    switch (mode) {
    case NI:
        return "it is not implemented";
    case NA:
        return "it is not available now";
    case WO:
        return "it can only be written";
    case RO:
        return "it can only be read now";
    default:
        return "its access mode is unknown";
    }
}

} // namespace

void Node::requireReadable() {
    const EAccessMode now = mode(Aspect::Readable);
    if (!IsReadable(now))
        throw ACCESS_EXCEPTION("%s can't be read: %s", label().c_str(), reason(now));
}

void Node::requireWritable(const Written& written) {
    const EAccessMode now = mode(Aspect::Full);
    if (!IsWritable(now))
        throw ACCESS_EXCEPTION("%s can't be %s: %s", label().c_str(), writtenText(*this, written).c_str(),
                               reason(now));
}

// Values

void Node::throwNoNumber() const {
    throw PROPERTY_EXCEPTION("%s is of the kind %s and has no number", label().c_str(),
                             std::string(KindName(m_kind)).c_str());
}

void Node::throwNoText() const {
    throw PROPERTY_EXCEPTION("%s is of the kind %s and has no text", label().c_str(),
                             std::string(KindName(m_kind)).c_str());
}

std::int64_t Node::readInteger(Reading) {
    throwNoNumber();
}
double Node::readFloat(Reading) {
    throwNoNumber();
}
void Node::writeInteger(std::int64_t, bool) {
    throwNoNumber();
}
void Node::writeFloat(double, bool) {
    throwNoNumber();
}
std::int64_t Node::minInteger() {
    throwNoNumber();
}
std::int64_t Node::maxInteger() {
    throwNoNumber();
}
std::int64_t Node::incInteger() {
    throwNoNumber();
}
double Node::minFloat() {
    throwNoNumber();
}
double Node::maxFloat() {
    throwNoNumber();
}
double Node::incFloat() {
    throwNoNumber();
}
const std::vector<std::int64_t>* Node::validIntegers() {
    return nullptr;
}
const std::vector<double>* Node::validFloats() {
    return nullptr;
}

// How a node's number is to be shown

ERepresentation Node::representation() {
    const std::string_view given = text(PropertyId::Representation);
    for (const auto& [text, representation] : {std::pair{"Linear", Linear},
                                               {"Logarithmic", Logarithmic},
                                               {"Boolean", Boolean},
                                               {"PureNumber", PureNumber},
                                               {"HexNumber", HexNumber},
                                               {"IPV4Address", IPV4Address},
                                               {"MACAddress", MACAddress}})
        if (given == text)
            return representation;
    return _UndefinedRepresentation;
}

std::string_view Node::unit() {
    return text(PropertyId::Unit);
}

EDisplayNotation Node::displayNotation() {
    const std::string_view given = text(PropertyId::DisplayNotation);
    for (const auto& [text, notation] :
         {std::pair{"Automatic", fnAutomatic}, {"Fixed", fnFixed}, {"Scientific", fnScientific}})
        if (given == text)
            return notation;
    return _UndefinedEDisplayNotation;
}

std::int64_t Node::displayPrecision() {
    std::int64_t precision = -1;
    return parseInteger(text(PropertyId::DisplayPrecision), precision) && precision >= 0 ? precision : -1;
}

// Entries

std::int64_t Node::entryValue(std::string_view symbolic) {
    throw PROPERTY_EXCEPTION("%s has no entry '%s': it is of the kind %s", label().c_str(),
                             std::string(symbolic).c_str(), std::string(KindName(m_kind)).c_str());
}

std::string_view Node::entryName(std::int64_t) {
    return {};
}

std::int64_t Node::checkedInteger(Reading how) {
    requireReadable();
    return readInteger(how);
}

double Node::checkedFloat(Reading how) {
    requireReadable();
    return readFloat(how);
}

std::string Node::readText(Reading) {
    throwNoText();
}
void Node::writeText(const std::string&, bool) {
    throwNoText();
}
std::int64_t Node::maxTextLength() {
    throwNoText();
}

// Errors that the camera reports after a write

namespace {

/// Entries by which cameras say that all went well, where that isn't their number 0.
bool meansNoError(std::string_view entry) {
    for (const std::string_view word : {"NoError", "No_Error", "None", "Ok", "OK", "Success"})
        if (entry == word)
            return true;
    return false;
}

} // namespace

void Node::askForError(Node& error, const Written& written) {
    const Evaluation evaluation(*this, Evaluation::Error, written);
    if (!IsReadable(error.mode(Aspect::Readable)))
        return;
    const std::int64_t code = error.readInteger({true});
    const std::string entry(error.entryName(code));
    if (code == 0 || meansNoError(entry))
        return;
    std::vector<Node*> old = withValueChildren();
    for (std::size_t i = 0, own = old.size(); i < own; ++i)
        old[i]->addSharers(old);
    for (Node* node : old)
        node->drop();
    m_map.changed(old);
    throw RUNTIME_EXCEPTION("%s was %s, and %s reports error %lld%s", Evaluation::blame(*this).c_str(),
                            writtenText(*this, written).c_str(), error.label().c_str(),
                            static_cast<long long>(code), entry.empty() ? "" : (" '" + entry + "'").c_str());
}

void Node::addSharers(std::vector<Node*>&) const {}

// Caches

bool Node::valueCached() const {
    return m_valueEpoch == m_map.epoch();
}

std::vector<Node*> Node::withValueChildren() {
    std::vector<Node*> all{this};
    std::vector<bool> seen(m_map.nodes().size(), false);
    seen[m_index] = true;
    std::vector<Node*> below;
    for (std::size_t i = 0; i < all.size(); ++i) {
        below.clear();
        all[i]->valueChildren(below);
        for (Node* child : below)
            if (!seen[child->index()]) {
                seen[child->index()] = true;
                all.push_back(child);
            }
    }
    return all;
}

void Node::invalidate() {
    const std::vector<Node*> old = withValueChildren();
    for (Node* node : old)
        node->drop();
    m_map.changed(old);
}

std::int64_t Node::pollingTime() const {
    std::int64_t time = -1;
    const std::string_view given = text(PropertyId::PollingTime);
    return !given.empty() && parseInteger(given, time) && time >= 0 ? time : -1;
}

void Node::poll() {
    if (!m_rare || m_rare->pBlockPolling == nullptr || !m_rare->pBlockPolling->holds())
        invalidate();
}

} // namespace genapi
