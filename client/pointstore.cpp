#include "pointstore.h"

#include "pointvalue.h"

PointStore::PointStore()
    : m_expected(m_map.constEnd())
{}

void PointStore::store(int pointId, float value)
{
    auto found = m_expected;
    if (found == m_map.constEnd() || found.key() != pointId)
        found = m_map.constFind(pointId);
    const QVariant variant(value);
    if (found == m_map.constEnd() || !pointvalue::isSame(found.value(), variant))
        found = QMap<int, QVariant>::const_iterator(m_map.insert(found, pointId, variant));
    m_expected = ++found;
}
