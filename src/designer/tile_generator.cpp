// Writes the classes of the tiles, for those components that the palette offers:
//
//     tile_generator SRC OUT    SRC: where the components' headers are; OUT: folder of tiles.h and tiles.cpp
//
// A widget's properties are known to form designers and loaders through its meta object only, and moc makes a
// meta object from nothing but a class that is written down. Written by hand, such classes would drift from
// the components; so they are written here, from the meta objects of the components, and moc reads them as
// any other header.

#include "tnv5/platform/errors.h"
#include "tnv5/registration/palette.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QMetaProperty>
#include <QRegularExpression>
#include <QSaveFile>
#include <cstdio>
#include <utility>

namespace {

using namespace tnv5;

class TOffered : public registration::TPalette
{
public:
    script::TScriptClasses Classes;

    void RegisterComponents(const QString& /*page*/, const script::TScriptClasses& classes) override
    {
        Classes = classes;
    }
};

/// The header under `root` that has the class, as it is included.
QString headerOf(const QString& root, const QString& name)
{
    const QRegularExpression head(QStringLiteral("^class %1 (final )?: ").arg(name),
                                  QRegularExpression::MultilineOption);
    QDirIterator files(root, {QStringLiteral("*.h")}, QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        QFile file(files.next());
        if (file.open(QIODevice::ReadOnly) && head.match(QString::fromUtf8(file.readAll())).hasMatch()) {
            return QStringLiteral("tnv5/") + QDir(root).relativeFilePath(file.fileName());
        }
    }
    throw platform::Exception("No header under " + root + " has the class " + name);
}

/// Whether it can be set, to something that a form file can hold.
bool fitsForm(const QMetaProperty& property)
{
    switch (property.typeId()) {
    case QMetaType::Int:
    case QMetaType::Bool:
    case QMetaType::QString:
    case QMetaType::QStringList:
        return property.isWritable();
    default:
        return property.isWritable() && property.isEnumType();
    }
}

/// "setRelayOpen" for "RelayOpen", "setPingdelay" for "pingdelay": what uic calls.
QString setterOf(const QString& property)
{
    return QStringLiteral("set") + property.at(0).toUpper() + property.mid(1);
}

struct TTileText
{
    QString component; ///< with its namespace
    QString tile;      ///< without
    QString declaration;
};

TTileText tileText(const script::TScriptClass& offered)
{
    TTileText text{QString::fromLatin1(offered.Meta->className()), offered.Name() + "Tile", {}};
    QString properties;
    QString accessors;
    for (int i = QObject::staticMetaObject.propertyCount(); i < offered.Meta->propertyCount(); ++i) {
        const QMetaProperty property = offered.Meta->property(i);
        if (!fitsForm(property)) {
            continue;
        }
        const QString name = QString::fromLatin1(property.name());
        const QString type = QString::fromLatin1(property.typeName());
        const QString setter = setterOf(name);
        properties += QStringLiteral("    Q_PROPERTY(%1 %2 READ %2 WRITE %3)\n").arg(type, name, setter);
        accessors += QStringLiteral("    %1 %2() const { return get<%1>(\"%2\"); }\n"
                                    "    void %3(const %1& value) { set(\"%2\", value); }\n")
                         .arg(type, name, setter);
    }
    text.declaration =
        QStringLiteral(
            "/// `%1` on a form.\n"
            "class %2 : public TTile\n"
            "{\n"
            "    Q_OBJECT\n"
            "%3\n"
            "public:\n"
            "    explicit %2(QWidget* parent = nullptr) : TTile(std::make_unique<%4>(), parent) {}\n"
            "\n"
            "    %4* component() const { return static_cast<%4*>(TTile::component()); }\n"
            "\n"
            "%5"
            "};\n")
            .arg(offered.Name(), text.tile, properties, text.component, accessors);
    return text;
}

void write(const QString& path, const QString& text)
{
    QSaveFile file(path);
    const QByteArray bytes = text.toUtf8();
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit()) {
        throw platform::Exception("Cannot write " + path + ": " + file.errorString());
    }
}

void generate(const QString& root, const QString& out)
{
    TOffered palette;
    const auto former = registration::setPaletteHost({&palette, {}});
    registration::Register();
    registration::setPaletteHost(former);

    QString includes;
    QString declarations;
    QString rows;
    for (const script::TScriptClass& offered : std::as_const(palette.Classes)) {
        const TTileText text = tileText(offered);
        includes += QStringLiteral("#include \"%1\"\n").arg(headerOf(root, offered.Name()));
        declarations += "\n" + text.declaration;
        rows += QStringLiteral("        row<%1, %2>(),\n").arg(text.component, text.tile);
    }
    const QString generated = QStringLiteral("// Written by tile_generator.\n\n");
    write(out + "/tiles.h", generated + "#pragma once\n\n" + includes +
                                "#include \"tnv5/designer/tile.h\"\n\nnamespace tnv5::designer {\n" +
                                declarations + "\n} // namespace tnv5::designer\n");
    write(out + "/tiles.cpp", generated +
                                  "#include \"tnv5/designer/tiles.h\"\n\nnamespace tnv5::designer {\n\n"
                                  "namespace {\n\n"
                                  "template <class Component, class Tile>\n"
                                  "TTileClass row()\n"
                                  "{\n"
                                  "    return {&Component::staticMetaObject, &Tile::staticMetaObject,\n"
                                  "            [](QWidget* parent) -> TTile* { return new Tile(parent); }};\n"
                                  "}\n\n"
                                  "} // namespace\n\n"
                                  "const std::vector<TTileClass>& tileClasses()\n"
                                  "{\n"
                                  "    static const std::vector<TTileClass> classes{\n" +
                                  rows +
                                  "    };\n"
                                  "    return classes;\n"
                                  "}\n\n"
                                  "} // namespace tnv5::designer\n");
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 3) {
        std::fputs("usage: tile_generator SRC OUT\n", stderr);
        return 2;
    }
    try {
        generate(QFile::decodeName(argv[1]), QFile::decodeName(argv[2]));
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "tile_generator: %s\n", failure.what());
        return 1;
    }
    return 0;
}
