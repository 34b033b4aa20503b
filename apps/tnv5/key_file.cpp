#include "apps/tnv5/key_file.h"

#include "tnv5/common/read_up_to.h"
#include "tnv5/common/text.h"
#include "tnv5/platform/errors.h"

#include <QFile>
#include <cstdio>

namespace tnv5::cli {

namespace {

constexpr qsizetype kLongest = 4'096; // bytes; more is no key, and a device may never end

[[noreturn]] void refuse(const QString& name, const QString& why)
{
    throw platform::Exception(name + QStringLiteral(": ") + why);
}

QByteArray contents(QFile& file, const QString& name)
{
    QByteArray bytes = common::ReadUpTo(file, kLongest + 1);
    if (file.error() != QFileDevice::NoError) {
        refuse(name, file.errorString());
    }
    return bytes;
}

} // namespace

QString readKey(const QString& fileName)
{
    const bool standardInput = fileName == u"-";
    const QString name = standardInput ? QStringLiteral("standard input") : fileName;
    QFile file(fileName);
    if (!(standardInput ? file.open(stdin, QIODevice::ReadOnly) : file.open(QIODevice::ReadOnly))) {
        refuse(name, file.errorString());
    }
    const QByteArray bytes = contents(file, name);
    if (bytes.size() > kLongest) {
        refuse(name, QStringLiteral("too long for a key"));
    }
    const QString text = QString::fromLatin1(bytes);
    const QString key = common::Trim(text).toString();
    if (key.isEmpty()) {
        refuse(name, QStringLiteral("there is no key in it"));
    }
    return key;
}

} // namespace tnv5::cli
