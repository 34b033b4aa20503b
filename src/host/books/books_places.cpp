// The part of the books that is about zones, gates, goods, and who is inside.

#include "tnv5/host/books/books_query.h"
#include "tnv5/host/shown_text.h"

namespace tnv5::host {

namespace {

constexpr qint64 kMostCentsPerKg = 1'000'000'000;

// Lists of zones are written with semicolons, gates with colons.
QString readZone(const QString& text)
{
    QString name = readName(text, QStringLiteral("a zone"));
    if (name.contains(u';') || name.contains(u':')) {
        throw EBooks(QStringLiteral("the name of a zone cannot hold \":\" or \";\""));
    }
    return name;
}

QString readAddress(const QString& text)
{
    if (!isLineAddress(text) && !isBusAddress(text)) {
        throw EBooks(
            quoted(text) +
            QStringLiteral(" is no gate's address: two digits and a capital letter such as 01A, or "
                           "four digits or capital letters such as 101T, and no I at the end (a display)"));
    }
    return text;
}

void needPrice(qint64 centsPerKg)
{
    if (centsPerKg < 0 || centsPerKg > kMostCentsPerKg) {
        throw EBooks(QStringLiteral("a price is 0 to 10000000.00 a kilogram"));
    }
}

} // namespace

// Zones

void TBooks::needZone(const QString& zone)
{
    if (query(u"SELECT 1 FROM zone WHERE name = ?", {zone}).any()) {
        return;
    }
    QStringList known;
    for (const QVariantList& row : zones().rows) {
        known.append(row[0].toString());
    }
    throw EBooks(QStringLiteral("there is no zone %1; there are %2")
                     .arg(quoted(zone), known.isEmpty() ? QStringLiteral("none: \"tnv5 zone add\"")
                                                        : known.join(QStringLiteral(", "))));
}

void TBooks::needZones(const QStringList& zones)
{
    if (zones.isEmpty()) {
        throw EBooks(QStringLiteral("a membership needs a zone that it opens"));
    }
    for (const QString& zone : zones) {
        needZone(zone);
    }
}

void TBooks::needNoZone(const QString& zone)
{
    if (query(u"SELECT 1 FROM zone WHERE name = ?", {zone}).any()) {
        throw EBooks(QStringLiteral("zone %1 is there already").arg(quoted(zone)));
    }
}

void TBooks::addZone(const QString& name)
{
    const QString zone = readZone(name);
    together([&] {
        needNoZone(zone);
        query(u"INSERT INTO zone (name) VALUES (?)", {zone});
    });
}

void TBooks::renameZone(const QString& name, const QString& newName)
{
    const QString zone = readZone(newName);
    together([&] {
        needZone(name);
        if (zone == name) {
            return;
        }
        needNoZone(zone);
        query(u"INSERT INTO zone (name) VALUES (?)", {zone});
        query(u"UPDATE gate SET zone = ? WHERE zone = ?", {zone, name});
        query(u"UPDATE membership_zone SET zone = ? WHERE zone = ?", {zone, name});
        query(u"DELETE FROM zone WHERE name = ?", {name});
    });
}

void TBooks::removeZone(const QString& name)
{
    together([&] {
        needZone(name);
        const auto count = [&](const char16_t* sql) { return query(sql, {name}).numbers().value(0); };
        const qint64 gates = count(u"SELECT count(*) FROM gate WHERE zone = ?");
        const qint64 memberships = count(u"SELECT count(*) FROM membership_zone WHERE zone = ?");
        if (gates + memberships > 0) {
            throw EBooks(QStringLiteral("zone %1 is in use: gates %2, memberships %3")
                             .arg(quoted(name))
                             .arg(gates)
                             .arg(memberships));
        }
        query(u"DELETE FROM zone WHERE name = ?", {name});
    });
}

TBookTable TBooks::zones()
{
    return query(u"SELECT name FROM zone ORDER BY name").table({{QStringLiteral("name")}});
}

// Gates

void TBooks::addGate(const TGate& gate)
{
    const QString address = readAddress(gate.address);
    together([&] {
        if (query(u"SELECT 1 FROM gate WHERE address = ?", {address}).any()) {
            throw EBooks(QStringLiteral("gate %1 is there already").arg(address));
        }
        needZone(gate.zone);
        query(u"INSERT INTO gate (address, zone, direction) VALUES (?, ?, ?)",
              {address, gate.zone, toText(gate.direction)});
    });
}

void TBooks::changeGate(const QString& address, const std::optional<QString>& zone,
                        std::optional<TDirection> direction)
{
    together([&] {
        if (!query(u"SELECT 1 FROM gate WHERE address = ?", {address}).any()) {
            throw EBooks(QStringLiteral("there is no gate ") + address);
        }
        if (zone) {
            needZone(*zone);
            query(u"UPDATE gate SET zone = ? WHERE address = ?", {*zone, address});
        }
        if (direction) {
            query(u"UPDATE gate SET direction = ? WHERE address = ?", {toText(*direction), address});
        }
    });
}

void TBooks::removeGate(const QString& address)
{
    if (query(u"DELETE FROM gate WHERE address = ?", {address}).changed() == 0) {
        throw EBooks(QStringLiteral("there is no gate ") + address);
    }
}

TBookTable TBooks::gates()
{
    return query(u"SELECT address, zone, direction FROM gate ORDER BY address")
        .table({{QStringLiteral("address")}, {QStringLiteral("zone")}, {QStringLiteral("direction")}});
}

// Products

void TBooks::addProduct(const QString& name, qint64 centsPerKg)
{
    const QString product = readName(name, QStringLiteral("a product"));
    needPrice(centsPerKg);
    together([&] {
        if (query(u"SELECT 1 FROM product WHERE name = ?", {product}).any()) {
            throw EBooks(QStringLiteral("product %1 is there already").arg(quoted(product)));
        }
        query(u"INSERT INTO product (name, cents_per_kg) VALUES (?, ?)", {product, centsPerKg});
    });
}

void TBooks::changeProduct(const QString& name, const std::optional<QString>& newName,
                           std::optional<qint64> centsPerKg)
{
    together([&] {
        const std::optional<qint64> price = FDatabase.priceOf(name);
        if (!price) {
            throw EBooks(QStringLiteral("there is no product ") + quoted(name));
        }
        if (newName && *newName != name) {
            addProduct(*newName, centsPerKg.value_or(*price));
            removeProduct(name);
        } else if (centsPerKg) {
            needPrice(*centsPerKg);
            FDatabase.setProduct(name, *centsPerKg);
        }
    });
}

void TBooks::removeProduct(const QString& name)
{
    if (query(u"DELETE FROM product WHERE name = ?", {name}).changed() == 0) {
        throw EBooks(QStringLiteral("there is no product ") + quoted(name));
    }
}

TBookTable TBooks::products()
{
    return query(u"SELECT name, cents_per_kg FROM product ORDER BY name")
        .table({{QStringLiteral("name")}, {QStringLiteral("price"), TColumnKind::Cents}});
}

// Who is inside

TBookTable TBooks::inside()
{
    return query(u"SELECT member.id, name, pass.ended, pass.gate, gate.zone FROM member"
                 u" LEFT JOIN pass ON pass.id = (SELECT max(each.id) FROM pass AS each"
                 u"  JOIN gate ON gate.address = each.gate AND gate.direction = 'in'"
                 u"  WHERE each.member = member.id AND each.ending = 'passed')"
                 u" LEFT JOIN gate ON gate.address = pass.gate WHERE inside = 1 ORDER BY name, member.id")
        .table({{QStringLiteral("member"), TColumnKind::Number},
                {QStringLiteral("name")},
                {QStringLiteral("since"), TColumnKind::Time},
                {QStringLiteral("gate")},
                {QStringLiteral("zone")}});
}

} // namespace tnv5::host
