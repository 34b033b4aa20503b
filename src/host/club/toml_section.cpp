#include "tnv5/host/club/toml_section.h"

#include <algorithm>

namespace tnv5::host {

namespace {

QString kindOf(const toml::node& node)
{
    switch (node.type()) {
    case toml::node_type::string:
        return QStringLiteral("a text");
    case toml::node_type::integer:
        return QStringLiteral("a whole number");
    case toml::node_type::floating_point:
        return QStringLiteral("a number with a fraction");
    case toml::node_type::boolean:
        return QStringLiteral("a truth value");
    case toml::node_type::array:
        return QStringLiteral("a list");
    case toml::node_type::table:
        return QStringLiteral("a table");
    default:
        return QStringLiteral("a date or time");
    }
}

std::optional<QString> textOf(const toml::node& node)
{
    const auto value = node.value_exact<std::string_view>();
    return value ? std::optional(QString::fromUtf8(value->data(), qsizetype(value->size()))) : std::nullopt;
}

bool hasControls(const QString& text)
{
    return std::any_of(text.begin(), text.end(),
                       [](QChar c) { return c.category() == QChar::Other_Control; });
}

/// Letters to be changed, put in or left out to make one word of another.
int distance(const QString& from, const QString& to)
{
    std::vector<int> row(std::size_t(to.size()) + 1);
    for (std::size_t i = 0; i < row.size(); ++i) {
        row[i] = int(i);
    }
    for (qsizetype i = 0; i < from.size(); ++i) {
        int diagonal = row[0];
        row[0] = int(i) + 1;
        for (qsizetype j = 0; j < to.size(); ++j) {
            const int changed = diagonal + (from[i] == to[j] ? 0 : 1);
            diagonal = row[std::size_t(j) + 1];
            row[std::size_t(j) + 1] = std::min({changed, diagonal + 1, row[std::size_t(j)] + 1});
        }
    }
    return row.back();
}

} // namespace

QString nearest(const QString& word, const QStringList& words)
{
    QString best;
    int least = 1 + int(word.size()) / 3; // more than that is another word
    for (const QString& each : words) {
        const int d = distance(word.toLower(), each.toLower());
        if (d <= least) {
            best = each;
            least = d - 1;
        }
    }
    return best;
}

TFileLine lineOf(const toml::node& node)
{
    return {int(node.source().begin.line)};
}

const toml::node* TTomlSection::find(const char* key)
{
    FKnown << QString::fromLatin1(key);
    return FTable.get(key);
}

bool TTomlSection::has(const char* key)
{
    return find(key) != nullptr;
}

TFileLine TTomlSection::line() const
{
    return host::lineOf(FTable);
}

TFileLine TTomlSection::lineOf(const char* key) const
{
    const auto found = FTable.find(key);
    return found == FTable.end() ? line() : TFileLine{int(found->first.source().begin.line)};
}

void TTomlSection::wrong(const char* key, const QString& what)
{
    FErrors.append({lineOf(key).number, FTitle + u' ' + QLatin1String(key) + QStringLiteral(": ") + what});
}

QString TTomlSection::text(const char* key)
{
    if (!has(key)) {
        wrong(key, QStringLiteral("is missing"));
        return {};
    }
    const QString value = textOr(key, QStringLiteral("?"));
    if (value.trimmed().isEmpty()) {
        wrong(key, QStringLiteral("must not be empty"));
    }
    return value;
}

QString TTomlSection::textOr(const char* key, const QString& otherwise)
{
    const toml::node* const node = find(key);
    if (node == nullptr) {
        return otherwise;
    }
    const std::optional<QString> value = textOf(*node);
    if (!value) {
        wrong(key, QStringLiteral("is ") + kindOf(*node) + QStringLiteral(", a text in quotes is expected"));
        return otherwise;
    }
    if (hasControls(*value)) {
        wrong(key, QStringLiteral("has a control character in it"));
        return otherwise;
    }
    return *value;
}

QStringList TTomlSection::texts(const char* key)
{
    const toml::node* const node = find(key);
    QStringList values;
    const toml::array* const list = node == nullptr ? nullptr : node->as_array();
    if (node != nullptr && list == nullptr) {
        wrong(key, QStringLiteral("is ") + kindOf(*node) + QStringLiteral(", a list of texts is expected"));
    }
    if (list != nullptr) {
        for (const toml::node& each : *list) {
            if (const std::optional<QString> value = textOf(each)) {
                values << *value;
            } else {
                wrong(key,
                      QStringLiteral("has ") + kindOf(each) + QStringLiteral(" in it, texts are expected"));
            }
        }
    }
    return values;
}

int TTomlSection::number(const char* key, int from, int to)
{
    if (!has(key)) {
        wrong(key, QStringLiteral("is missing"));
        return from;
    }
    return numberOr(key, from, to, from);
}

int TTomlSection::numberOr(const char* key, int from, int to, int otherwise)
{
    const toml::node* const node = find(key);
    if (node == nullptr) {
        return otherwise;
    }
    const std::optional<int64_t> value = node->value_exact<int64_t>();
    if (!value) {
        wrong(key, QStringLiteral("is %1, a whole number is expected").arg(kindOf(*node)));
        return otherwise;
    }
    if (*value < from || *value > to) {
        wrong(key, QStringLiteral("%1 is not between %2 and %3").arg(*value).arg(from).arg(to));
        return otherwise;
    }
    return int(*value);
}

const toml::table* TTomlSection::table(const char* key)
{
    const toml::node* const node = find(key);
    if (node != nullptr && !node->is_table()) {
        wrong(key, QStringLiteral("is %1, a table is expected").arg(kindOf(*node)));
    }
    return node == nullptr ? nullptr : node->as_table();
}

void TTomlSection::end()
{
    for (const auto& [key, node] : FTable) {
        const QString name = QString::fromUtf8(key.str().data(), qsizetype(key.str().size()));
        if (FKnown.contains(name)) {
            continue;
        }
        FKnown.removeDuplicates();
        const QString meant = nearest(name, FKnown);
        FErrors.append(
            {int(key.source().begin.line),
             FTitle + u' ' + name + QStringLiteral(": no such key; ") +
                 (meant.isEmpty() ? QStringLiteral("there are ") + FKnown.join(QStringLiteral(", "))
                                  : QStringLiteral("is %1 meant?").arg(meant))});
    }
}

} // namespace tnv5::host
