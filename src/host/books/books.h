#pragma once

#include "tnv5/host/books/book_table.h"
#include "tnv5/host/books/books_error.h"
#include "tnv5/host/books/database.h"

namespace tnv5::host {

/// A new member, with what usually comes with one.
struct TNewMember
{
    QString name = {};
    qint64 number = 0; ///< 0: the next one
    bool suspended = false;
    bool inside = false;
    qint64 balance = 0; ///< cents
    QStringList cards = {};
    std::optional<TMembership> membership = {};
};

/// What is to be changed of a member; the rest stays.
struct TMemberChange
{
    std::optional<QString> name = {};
    std::optional<bool> suspended = {};
    std::optional<bool> inside = {};
    std::optional<qint64> balance = {}; ///< becomes this, in cents
    std::optional<qint64> credit = {};  ///< is added to the balance
};

/// Keeps the club's books for people: members, cards, memberships, zones, gates and products.
///
///     TDatabase club("club.sqlite", TOpening::Existing);
///     TBooks books(club);
///     const qint64 anna = books.addMember({"Anna Berg"});
///     books.addCard("12345678", anna);
///
/// Each call is done as a whole or not at all. What cannot be is an EBooks with a sentence for the person who
/// asked, what the database refuses an EDatabase. A host may run on the same database: it sees what is
/// written at the next card; only its list of gates is read at its start. The database must outlive the
/// books.
class TBooks
{
public:
    /// How long a write waits for another program, in milliseconds: no gate waits for these.
    static constexpr int kPatienceMs = 5'000;

    explicit TBooks(TDatabase& database);
    ~TBooks();
    TBooks(const TBooks&) = delete;
    TBooks& operator=(const TBooks&) = delete;

    /// Runs `body` so that all that it does is done or nothing.
    void together(const std::function<void()>& body);

    /// Number of a member given by number or, when it is the only one of that name, by name.
    qint64 memberOf(const QString& who);
    /// A name that is a number is refused: it would be taken for the member of that number.
    qint64 addMember(const TNewMember& member);
    void changeMember(qint64 member, const TMemberChange& change);
    /// Cards and memberships go, too; passes and sales stay in the books, without a member.
    /// @param force also one who is inside, or whose balance is not 0
    void removeMember(qint64 member, bool force);
    TBookTable members();

    void addCard(const QString& card, qint64 member);
    /// Gives a card to another member.
    void giveCard(const QString& card, qint64 member, bool force);
    void renumberCard(const QString& card, const QString& number);
    /// @param force also the last card of a member who is inside and could not get out without
    void removeCard(const QString& card, bool force);
    TBookTable cards();

    /// @throws EBooks unless there is one at least and all are there
    void needZones(const QStringList& zones);
    /// It opens one zone at least, and its zones must be there.
    qint64 addMembership(qint64 member, const TMembership& membership);
    /// What is nothing stays.
    void changeMembership(qint64 number, std::optional<QDate> from, std::optional<QDate> to,
                          const std::optional<QStringList>& zones);
    void removeMembership(qint64 number);
    /// @param member of this one; 0: of all
    TBookTable memberships(qint64 member = 0);

    void addZone(const QString& name);
    /// Gates and memberships go with it.
    void renameZone(const QString& name, const QString& newName);
    /// A zone that a gate or a membership needs stays.
    void removeZone(const QString& name);
    TBookTable zones();

    /// The zone must be there, the address must not.
    void addGate(const TGate& gate);
    void changeGate(const QString& address, const std::optional<QString>& zone,
                    std::optional<TDirection> direction);
    void removeGate(const QString& address);
    TBookTable gates();

    void addProduct(const QString& name, qint64 centsPerKg);
    void changeProduct(const QString& name, const std::optional<QString>& newName,
                       std::optional<qint64> centsPerKg);
    void removeProduct(const QString& name);
    TBookTable products();

    /// Who is inside, since when and through which gate, as far as the journal knows.
    TBookTable inside();

private:
    class TQuery;
    TQuery query(const char16_t* sql, const QVariantList& values = {});
    void needMember(qint64 member);
    qint64 holderOfCard(const QString& card);
    void needOtherCard(const QString& card, bool force);
    void needZone(const QString& zone);
    void needNoZone(const QString& zone);
    void setMembershipZones(qint64 number, const QStringList& zones);

    TDatabase& FDatabase;
    TWriteTransaction* FTransaction = nullptr;
};

// What people write. Each gives the value or throws EBooks with what is expected.

/// A day, "2026-01-31" and nothing else.
QDate readDay(const QString& text);
/// An amount of cents: "12.50", "-3", "0". @return -99,999,999,999 to 99,999,999,999
qint64 readAmount(const QString& text);
/// "yes" or "no"; "true", "false", "1" and "0" do as well.
bool readFlag(const QString& text);
/// "in", "out" or "inner".
TDirection readDirection(const QString& text);
/// A name: spaces around it go. Neither empty, nor longer than 200 characters, nor with control characters in
/// it.
/// @param what whose name, such as "a member"
QString readName(const QString& text, const QString& what);

} // namespace tnv5::host
