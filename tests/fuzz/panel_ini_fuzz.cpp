// Any file as the gate panel's ini file: the gates that are read are written and come back, what is foreign
// stays, and writing twice changes nothing. The first byte tells how many gates are written.

#include "fuzz_host.h"
#include "tnv5/panel/gate_ini.h"

#include <QString>

using namespace tnv5;

namespace {

using fuzz::require;
using panel::TGateRecord;

const QString kSection = QStringLiteral("Gates");

/// What stands before all sections, as bytes, unless the encoding changed.
void requireForeignKept(const QByteArray& before, const QByteArray& after)
{
    const bool marked = after.startsWith("\xef\xbb\xbf") && !before.startsWith("\xef\xbb\xbf");
    require(marked || after.startsWith(before.left(before.indexOf('['))));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0) {
        return 0;
    }
    const QByteArray file(reinterpret_cast<const char*>(data) + 1, static_cast<qsizetype>(size - 1));
    std::vector<TGateRecord> gates = panel::readGates(file, kSection);
    require(gates.size() <= std::size_t{panel::kMostGates});
    gates.resize(data[0] % 8);
    const QByteArray once = panel::writtenGates(file, kSection, gates);
    requireForeignKept(file, once);
    require(panel::readGates(once, kSection) == gates);
    require(panel::writtenGates(once, kSection, gates) == once);
    return 0;
}
