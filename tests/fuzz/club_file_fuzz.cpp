// Whatever a club's file says, it is read to its end: errors stand in the order of their lines and are one
// line each, and a plan without errors has what the running club relies on.

#include "tnv5/host/club/club_file.h"

#include <QSet>
#include <algorithm>
#include <cstdint>
#include <cstdlib>

using namespace tnv5::host;

namespace {

void require(bool holds)
{
    if (!holds) {
        std::abort();
    }
}

void requireGood(const TClubPlan& plan)
{
    QSet<QString> names;
    for (const QList<TLinePlan>& list : {plan.lines, plan.buses}) {
        for (const TLinePlan& line : list) {
            require(!line.name.isEmpty() && !names.contains(line.name) && !line.port.isEmpty());
            names.insert(line.name);
        }
    }
    QSet<QString> addresses;
    for (const TGatePlan& gate : plan.gates) {
        require(names.contains(gate.line) && !gate.gate.zone.isEmpty() &&
                !addresses.contains(gate.gate.address));
        addresses.insert(gate.gate.address);
    }
    for (const TLampPlan& lamp : plan.lamps) {
        require(names.contains(lamp.bus) && lamp.lamp.board.size() == 4);
    }
    require(!plan.name.isEmpty() && !plan.database.isEmpty());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray text(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const TClubFile file = readClub(text, QStringLiteral("/club"));
    require(std::is_sorted(file.errors.begin(), file.errors.end(),
                           [](const TFileError& a, const TFileError& b) { return a.line < b.line; }));
    for (const TFileError& error : file.errors) {
        require(!error.text.isEmpty() && error.line >= 0 && error.line <= text.count('\n') + 1);
    }
    if (file.errors.isEmpty()) {
        requireGood(file.plan);
        require(compareWithBooks(file.plan, {}).size() == file.plan.gates.size());
    }
    return 0;
}
