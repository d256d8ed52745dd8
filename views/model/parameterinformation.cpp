#include "parameterinformation.h"

void ParameterInformation::addCombo(const QStringList& texts)
{
    for (int i = 0; i < texts.size(); ++i)
        comboMap.insert(texts.at(i), i);
}

void ParameterInformation::addCombo(const QStringList& texts, const QList<float>& values)
{
    for (int i = 0; i < texts.size() && i < values.size(); ++i)
        comboMap.insert(texts.at(i), static_cast<int>(values.at(i)));
}
