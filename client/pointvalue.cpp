#include "pointvalue.h"

#include <cstring>

namespace pointvalue {

namespace {

bool isFloat(const QVariant& value)
{
    return value.userType() == QMetaType::Float;
}

// Without the conversion machinery of QVariant: this runs for every point in every cycle.
float floatIn(const QVariant& value)
{
    return *static_cast<const float*>(value.constData());
}

quint32 bitsOf(float number)
{
    quint32 bits = 0;
    static_assert(sizeof bits == sizeof number, "a float has 32 bits here");
    std::memcpy(&bits, &number, sizeof bits);
    return bits;
}

} // namespace

int asInt(const QVariant& value)
{
    if (!isFloat(value))
        return value.toInt();
    const float number = floatIn(value);
    const float beyondInt = 2147483648.0F;
    return number >= -beyondInt && number < beyondInt ? static_cast<int>(qRound64(number)) : 0;
}

int intAt(const QMap<int, QVariant>& data, int pointId)
{
    const auto found = data.constFind(pointId);
    return found == data.constEnd() ? 0 : asInt(found.value());
}

bool isSame(const QVariant& a, const QVariant& b)
{
    if (a.userType() != b.userType())
        return false;
    if (!isFloat(a))
        return a == b;
    return bitsOf(floatIn(a)) == bitsOf(floatIn(b));
}

} // namespace pointvalue
