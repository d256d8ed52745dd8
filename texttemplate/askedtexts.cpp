#include "askedtexts.h"

#include <QMutexLocker>

QString AskedTexts::translate(const char* context, const char* sourceText, const char* disambiguation,
                              int n) const
{
    Q_UNUSED(n)
    const QMutexLocker locker(&m_lock);
    m_texts.insert({context, sourceText, disambiguation});
    return {};
}

std::set<AskedText> AskedTexts::texts() const
{
    const QMutexLocker locker(&m_lock);
    return m_texts;
}
