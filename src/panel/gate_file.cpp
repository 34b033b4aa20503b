#include "tnv5/common/read_up_to.h"
#include "tnv5/panel/gate_ini.h"

#include <QFileInfo>
#include <QSaveFile>

namespace tnv5::panel {

namespace {

const QString kTooLarge = QStringLiteral("the file is too large");

[[noreturn]] void fail(const QString& what, const QString& fileName, const QString& why)
{
    throw EIniFile(QStringLiteral("%1 \"%2\": %3").arg(what, fileName, why));
}

QByteArray readAll(const QString& fileName)
{
    const QString what = QStringLiteral("Cannot read");
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly)) {
        fail(what, fileName, file.errorString());
    }
    const QByteArray content = common::ReadUpTo(file, kMostIniBytes + 1);
    if (file.error() != QFileDevice::NoError) {
        fail(what, fileName, file.errorString());
    }
    if (content.size() > kMostIniBytes) {
        fail(what, fileName, kTooLarge);
    }
    return content;
}

} // namespace

std::optional<std::vector<TGateRecord>> loadGates(const QString& fileName, const QString& section)
{
    if (!QFileInfo(fileName).isFile()) {
        return std::nullopt;
    }
    return readGates(readAll(fileName), section);
}

void saveGates(const QString& fileName, const QString& section, const std::vector<TGateRecord>& gates)
{
    const QString what = QStringLiteral("Cannot write");
    const QFileInfo info(fileName);
    QByteArray before;
    if (info.exists()) {
        constexpr auto kWritable =
            QFileDevice::WriteOwner | QFileDevice::WriteGroup | QFileDevice::WriteOther;
        if (!info.isFile()) {
            fail(what, fileName, QStringLiteral("it is no file"));
        }
        if (!(info.permissions() & kWritable)) { // who may write everything shall not, either
            fail(what, fileName, QStringLiteral("the file is read-only"));
        }
        before = readAll(fileName);
    }
    const QByteArray content = writtenGates(before, section, gates);
    if (content.size() > kMostIniBytes) {
        fail(what, fileName, kTooLarge);
    }
    QSaveFile file(fileName);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size() || !file.commit()) {
        fail(what, fileName, file.errorString());
    }
}

} // namespace tnv5::panel
