#include "apps/tnv5-desk/language.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>

namespace tnv5::desk {

namespace {

const QString kEnglish = QStringLiteral("en");

} // namespace

const QStringList& languages()
{
    static const QStringList codes = {kEnglish, QStringLiteral("ru"), QStringLiteral("uk")};
    return codes;
}

QString systemLanguage()
{
    for (const QString& name : QLocale::system().uiLanguages()) {
        const QString code = name.left(2);
        if (languages().contains(code)) {
            return code;
        }
    }
    return kEnglish;
}

bool setLanguage(const QString& code)
{
    static QTranslator desk;
    static QTranslator qt; // menus of text fields, where it is installed
    QCoreApplication::removeTranslator(&desk);
    QCoreApplication::removeTranslator(&qt);
    if (!languages().contains(code)) {
        return false;
    }
    QLocale::setDefault(QLocale(code));
    if (code == kEnglish) {
        return true;
    }
    if (qt.load(QStringLiteral("qtbase_") + code, QLibraryInfo::path(QLibraryInfo::TranslationsPath))) {
        QCoreApplication::installTranslator(&qt);
    }
    return desk.load(QStringLiteral(":/i18n/tnv5-desk_%1.qm").arg(code)) &&
           QCoreApplication::installTranslator(&desk);
}

} // namespace tnv5::desk
