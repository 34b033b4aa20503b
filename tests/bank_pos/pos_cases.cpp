#include "pos_cases.h"

#include <QMetaProperty>

namespace tnv5::tests {

const std::vector<TPosCase>& posCases()
{
    static const std::vector<TPosCase> all = [] {
        std::vector<TPosCase> list;
        for (const auto& part :
             {ecrLibCases(), bpos1Cases(), controlCases(), bluePadCases(), cardPayCases()}) {
            list.insert(list.end(), part.begin(), part.end());
        }
        return list;
    }();
    return all;
}

void spoilResults(TBankPOS& pos)
{
    const QMetaObject& meta = TBankPOS::staticMetaObject;
    for (int i = meta.indexOfProperty("RRN"); i < meta.propertyCount(); ++i) {
        const QMetaProperty property = meta.property(i);
        if (property.metaType() == QMetaType::fromType<QString>() && property.isWritable()) {
            property.write(&pos, QStringLiteral("old ") + QString::fromLatin1(property.name()));
        }
    }
}

} // namespace tnv5::tests
