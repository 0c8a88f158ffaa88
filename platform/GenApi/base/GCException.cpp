#include "Base/GCException.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace GenICam_3_0 {

namespace {

const char* lastPathPart(const char* path) {
    if (path == nullptr)
        return "";
    const char* slash = std::strrchr(path, '/');
    return slash != nullptr ? slash + 1 : path;
}

std::string format(const char* format, va_list arguments) {
    va_list counted;
    va_copy(counted, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, counted);
    va_end(counted);
    if (length < 0)
        return format;
    std::string text(static_cast<std::size_t>(length), '\0');
    std::vsnprintf(text.data(), text.size() + 1, format, arguments);
    return text;
}

} // namespace

GenericException::GenericException(const char* description, const char* sourceFileName,
                                   unsigned int sourceLine)
    : GenericException(description, sourceFileName, sourceLine, "GenericException") {}

GenericException::GenericException(const char* description, const char* sourceFileName,
                                   unsigned int sourceLine, const char* type)
    : m_description(description != nullptr ? description : "")
    , m_sourceFileName(lastPathPart(sourceFileName))
    , m_what(m_description + " : " + (type != nullptr ? type : "GenericException") + " thrown (file '" +
             m_sourceFileName + "', line " + std::to_string(sourceLine) + ")")
    , m_sourceLine(sourceLine) {}

GenericException::GenericException(const GenericException& other) = default;
GenericException& GenericException::operator=(const GenericException& other) = default;
GenericException::~GenericException() = default;

const char* GenericException::GetDescription() const noexcept {
    return m_description.c_str();
}
const char* GenericException::GetSourceFileName() const noexcept {
    return m_sourceFileName.c_str();
}
unsigned int GenericException::GetSourceLine() const noexcept {
    return m_sourceLine;
}
const char* GenericException::what() const noexcept {
    return m_what.c_str();
}

template<class E>
E ExceptionReporter<E>::Report(const char* text, ...) const {
    va_list arguments;
    va_start(arguments, text);
    const std::string description = format(text, arguments);
    va_end(arguments);
    return E(description.c_str(), m_sourceFileName, m_sourceLine);
}

#define GCBASE_DEFINE_EXCEPTION(name)                                                                        \
    name::name(const char* description, const char* sourceFileName, unsigned int sourceLine)                 \
        : GenericException(description, sourceFileName, sourceLine, #name) {}                                \
    name::name(const name& other) = default;                                                                 \
    name& name::operator=(const name& other) = default;                                                      \
    name::~name() = default;                                                                                 \
    template class ExceptionReporter<name>

template class ExceptionReporter<GenericException>;
GCBASE_DEFINE_EXCEPTION(BadAllocException);
GCBASE_DEFINE_EXCEPTION(InvalidArgumentException);
GCBASE_DEFINE_EXCEPTION(OutOfRangeException);
GCBASE_DEFINE_EXCEPTION(PropertyException);
GCBASE_DEFINE_EXCEPTION(RuntimeException);
GCBASE_DEFINE_EXCEPTION(LogicalErrorException);
GCBASE_DEFINE_EXCEPTION(AccessException);
GCBASE_DEFINE_EXCEPTION(TimeoutException);
GCBASE_DEFINE_EXCEPTION(DynamicCastException);

} // namespace GenICam_3_0
