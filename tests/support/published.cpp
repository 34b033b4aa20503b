#include "support/published.h"

#include <QStringList>

namespace tnv5::tests {

void expectPublished(const QMetaObject& meta, const TPublishedTable& table)
{
    QStringList published;
    for (int i = meta.propertyOffset(); i < meta.propertyCount(); ++i) {
        published << QString::fromLatin1(meta.property(i).name());
    }
    QStringList names;
    for (const TPublished& row : table) {
        names << QString::fromLatin1(row.name);
        const QMetaProperty property = meta.property(meta.indexOfProperty(row.name));
        EXPECT_TRUE(property.isReadable()) << row.name;
        EXPECT_EQ(property.isWritable(), row.access == TPublished::ReadWrite) << row.name;
    }
    EXPECT_EQ(published.join(u' ').toStdString(), names.join(u' ').toStdString());
}

void expectTypes(const QMetaObject& meta, const TPublishedTable& table)
{
    for (const TPublished& row : table) {
        const QMetaType type = meta.property(meta.indexOfProperty(row.name)).metaType();
        EXPECT_EQ(type, row.type) << row.name << " is a " << type.name();
    }
}

void expectDefaults(const QObject& component, const TPublishedTable& table)
{
    for (const TPublished& row : table) {
        const QVariant value = component.property(row.name);
        EXPECT_TRUE(value.isValid()) << row.name;
        EXPECT_TRUE(row.isDefault(value)) << row.name << ": " << value.toString().toStdString();
    }
}

void expectKeepsNumbers(QObject& component, const TPublishedTable& table)
{
    const auto eachNumber = [&](const auto& look) {
        int number = 100;
        for (const TPublished& row : table) {
            if (row.type == QMetaType::fromType<int>() && row.access == TPublished::ReadWrite) {
                look(row.name, ++number);
            }
        }
    };
    eachNumber([&](const char* name, int number) { EXPECT_TRUE(component.setProperty(name, number)); });
    eachNumber(
        [&](const char* name, int number) { EXPECT_EQ(component.property(name).toInt(), number) << name; });
}

} // namespace tnv5::tests
