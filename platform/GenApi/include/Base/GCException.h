#pragma once
/// The exceptions of the published GenICam interface. Each carries what happened (GetDescription), where it
/// was thrown (GetSourceFileName, GetSourceLine) and, in what(), all of it in one line that an operator can
/// be shown. Texts that concern a node name the node and the value. Copying is safe on any thread; the texts
/// live as long as the object.
#include <exception>
#include <string>

#include "Base/GCString.h"

namespace GenICam_3_0 {

class GCBASE_API GenericException : public std::exception {
public:
    GenericException(const char* description, const char* sourceFileName, unsigned int sourceLine);
    /// `type` is the class name that what() tells, such as "AccessException".
    GenericException(const char* description, const char* sourceFileName, unsigned int sourceLine,
                     const char* type);
    GenericException(const GenericException& other);
    GenericException& operator=(const GenericException& other);
    ~GenericException() override;

    /// What happened, without class, file and line.
    virtual const char* GetDescription() const noexcept;
    /// The last part of the path of the source file that threw.
    virtual const char* GetSourceFileName() const noexcept;
    virtual unsigned int GetSourceLine() const noexcept;
    /// "<description> : <class> thrown (file '<file>', line <line>)".
    const char* what() const noexcept override;

private:
    std::string m_description;
    std::string m_sourceFileName;
    std::string m_what;
    unsigned int m_sourceLine;
};

// The destructors stand in the library, so that each class's type information does too and is caught by any
// caller.
#define GCBASE_DECLARE_EXCEPTION(name)                                                                       \
    class GCBASE_API name : public GenericException {                                                        \
    public:                                                                                                  \
        name(const char* description, const char* sourceFileName, unsigned int sourceLine);                  \
        name(const name& other);                                                                             \
        name& operator=(const name& other);                                                                  \
        ~name() override;                                                                                    \
    }

/// Memory could not be had.
GCBASE_DECLARE_EXCEPTION(BadAllocException);
/// An argument can never be right here (a text that is no number, an unknown symbol, a null pointer).
GCBASE_DECLARE_EXCEPTION(InvalidArgumentException);
/// A value or index lies outside of its range or off its increment.
GCBASE_DECLARE_EXCEPTION(OutOfRangeException);
/// A node's description in the XML is wrong (a property is missing, unreadable or of the wrong kind).
GCBASE_DECLARE_EXCEPTION(PropertyException);
/// Something failed at run time that is no fault of the caller: a file, a camera's answer, a formula.
GCBASE_DECLARE_EXCEPTION(RuntimeException);
/// The interface is used in the wrong order or on an object that is not there.
GCBASE_DECLARE_EXCEPTION(LogicalErrorException);
/// The node can't be read or written now, or at all.
GCBASE_DECLARE_EXCEPTION(AccessException);
/// An operation took too long.
GCBASE_DECLARE_EXCEPTION(TimeoutException);
/// A node has another interface than the one asked for.
GCBASE_DECLARE_EXCEPTION(DynamicCastException);

#undef GCBASE_DECLARE_EXCEPTION

/// Makes an exception of class E from a printf format; use the macros below, which fill in file and line.
template<class E>
class ExceptionReporter {
public:
    ExceptionReporter(const char* sourceFileName, unsigned int sourceLine)
        : m_sourceFileName(sourceFileName), m_sourceLine(sourceLine) {}
    E Report(const char* format, ...) const __attribute__((format(printf, 2, 3)));
    E Report(const std::string& description) const {
        return E(description.c_str(), m_sourceFileName, m_sourceLine);
    }

private:
    const char* m_sourceFileName;
    unsigned int m_sourceLine;
};

extern template class GCBASE_API ExceptionReporter<GenericException>;
extern template class GCBASE_API ExceptionReporter<BadAllocException>;
extern template class GCBASE_API ExceptionReporter<InvalidArgumentException>;
extern template class GCBASE_API ExceptionReporter<OutOfRangeException>;
extern template class GCBASE_API ExceptionReporter<PropertyException>;
extern template class GCBASE_API ExceptionReporter<RuntimeException>;
extern template class GCBASE_API ExceptionReporter<LogicalErrorException>;
extern template class GCBASE_API ExceptionReporter<AccessException>;
extern template class GCBASE_API ExceptionReporter<TimeoutException>;
extern template class GCBASE_API ExceptionReporter<DynamicCastException>;

} // namespace GenICam_3_0

// Use as: throw ACCESS_EXCEPTION("register 0x%llx does not answer", address);
#define GENERIC_EXCEPTION                                                                                    \
    GenICam_3_0::ExceptionReporter<GenICam_3_0::GenericException>(__FILE__, __LINE__).Report
#define BAD_ALLOC_EXCEPTION                                                                                  \
    GenICam_3_0::ExceptionReporter<GenICam_3_0::BadAllocException>(__FILE__, __LINE__).Report
#define INVALID_ARGUMENT_EXCEPTION                                                                           \
    GenICam_3_0::ExceptionReporter<GenICam_3_0::InvalidArgumentException>(__FILE__, __LINE__).Report
#define OUT_OF_RANGE_EXCEPTION                                                                               \
    GenICam_3_0::ExceptionReporter<GenICam_3_0::OutOfRangeException>(__FILE__, __LINE__).Report
#define PROPERTY_EXCEPTION                                                                                   \
    GenICam_3_0::ExceptionReporter<GenICam_3_0::PropertyException>(__FILE__, __LINE__).Report
#define RUNTIME_EXCEPTION                                                                                    \
    GenICam_3_0::ExceptionReporter<GenICam_3_0::RuntimeException>(__FILE__, __LINE__).Report
#define LOGICAL_ERROR_EXCEPTION                                                                              \
    GenICam_3_0::ExceptionReporter<GenICam_3_0::LogicalErrorException>(__FILE__, __LINE__).Report
#define ACCESS_EXCEPTION                                                                                     \
    GenICam_3_0::ExceptionReporter<GenICam_3_0::AccessException>(__FILE__, __LINE__).Report
#define TIMEOUT_EXCEPTION                                                                                    \
    GenICam_3_0::ExceptionReporter<GenICam_3_0::TimeoutException>(__FILE__, __LINE__).Report
#define DYNAMICCAST_EXCEPTION                                                                                \
    GenICam_3_0::ExceptionReporter<GenICam_3_0::DynamicCastException>(__FILE__, __LINE__).Report
