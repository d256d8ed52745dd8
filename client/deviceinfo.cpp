#include "deviceinfo.h"

#include "pointvalue.h"

void DeviceInfo::updatePoints(QMap<QString, QVariant>& info, const QMap<int, QVariant>& data)
{
    updateKeys(data);

    // As long as nothing differs only const iterators touch the map: it must not detach for nothing. The
    // keys of a unit sort as texts as they sort as numbers, so the next entry is nearly always the one.
    auto point = data.constBegin();
    int i = 0;
    auto entry = info.constBegin();
    for (; point != data.constEnd(); ++point, ++i, ++entry) {
        const QString& key = m_keys.at(i);
        if (entry == info.constEnd() || entry.key() != key)
            entry = info.constFind(key);
        if (entry == info.constEnd() || !pointvalue::isSame(entry.value(), point.value()))
            break;
    }
    if (point == data.constEnd())
        return;

    auto target = info.find(m_keys.at(i));
    for (; point != data.constEnd(); ++point, ++i) {
        const QString& key = m_keys.at(i);
        if (target == info.end() || target.key() != key)
            target = info.find(key);
        if (target == info.end())
            target = info.insert(key, point.value());
        else if (!pointvalue::isSame(target.value(), point.value()))
            target.value() = point.value();
        ++target;
    }
}

void DeviceInfo::update(QMap<QString, QVariant>& info, const QString& key, const QVariant& value)
{
    const auto found = info.constFind(key);
    if (found == info.constEnd() || !pointvalue::isSame(found.value(), value))
        info.insert(key, value);
}

void DeviceInfo::updateKeys(const QMap<int, QVariant>& data)
{
    // Points are only ever added to a data map, so an equal number means equal points.
    if (m_keys.size() == data.size())
        return;
    m_keys.clear();
    m_keys.reserve(data.size());
    for (auto point = data.constBegin(); point != data.constEnd(); ++point)
        m_keys.append(QString::number(point.key(), 10));
}

QByteArray identity::modelOf(const QMap<int, QVariant>& data)
{
    const int firstPoint = 4016;
    const int length = 16;
    QByteArray text(length, '\0');
    for (int i = 0; i < length; ++i)
        text[i] = static_cast<char>(pointvalue::intAt(data, firstPoint + i));
    return text;
}
