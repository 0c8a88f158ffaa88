// Events of the central window in the message log.
#pragma once

#include "Common/QFunction.h"

// Under the program's own name; nothing when the program is ending. Any thread.
inline void LogProgram(_MESSAGE_LOG_LEVEL_ level, const QString& text) {
    if (QFunction* function = QFunction::Instance())
        function->InsertMessageLog(level, "KOLT CAPTURE", text);
}
