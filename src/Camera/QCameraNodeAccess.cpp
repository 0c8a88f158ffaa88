#include "Camera/QCameraNodeAccess.h"

#include <algorithm>
#include <limits>

QString GenericRemark(const GenICam_3_0::GenericException& error) {
    return QString("what:%1 SourceFileName:%2")
        .arg(QString::fromUtf8(error.what()), QString::fromUtf8(error.GetSourceFileName()));
}

QString IntegerRemark(int number) {
    return "Error code:0x" + QString::number(static_cast<unsigned>(number), 16);
}

QString UnknownRemark() {
    return "Unknow error."; // deliberate: this spelling
}

float NarrowToFloat(double value) {
    if (value > static_cast<double>(std::numeric_limits<float>::max()))
        return std::numeric_limits<float>::infinity();
    if (value < static_cast<double>(std::numeric_limits<float>::lowest()))
        return -std::numeric_limits<float>::infinity();
    return static_cast<float>(value);
}

int NumberOfSymbol(const char* symbol, std::initializer_list<std::pair<const char*, int>> numbers,
                   int otherwise) {
    const auto* found = std::find_if(numbers.begin(), numbers.end(), [symbol](const auto& entry) {
        return std::strcmp(entry.first, symbol) == 0;
    });
    return found == numbers.end() ? otherwise : found->second;
}

long long PacketSizeOnGrid(long long optimum, long long increment, long long maximum, long long minimum) {
    const long long step = std::max(increment, 1LL);
    const long long clamped = std::max(minimum, std::min(optimum, maximum));
    // A camera may name any range: the distance of two 64-bit numbers wants more than 64 bits.
    const __int128 steps = (static_cast<__int128>(clamped) - minimum) / step;
    return static_cast<long long>(steps * step + minimum);
}

int IntegerOfText(const QString& text) {
    const QString trimmed = text.trimmed();
    return trimmed.startsWith("0x", Qt::CaseInsensitive) ? trimmed.mid(2).toInt(nullptr, 16)
                                                         : trimmed.toInt();
}
