// Zones, gates and products.

#include "apps/tnv5/book_verbs.h"

namespace tnv5::cli {

namespace {

struct TZoneOptions
{
    std::vector<std::string> names;
    std::string name;
    std::string newName;
};

struct TGateOptions
{
    std::string address;
    std::string zone;
    std::string direction;
};

struct TProductOptions
{
    std::string name;
    std::string price;
    std::optional<std::string> newName;
    std::optional<std::string> newPrice;
};

void addZones(host::TBooks& books, const TZoneOptions& options)
{
    books.together([&] {
        for (const QString& name : texts(options.names)) {
            books.addZone(name);
        }
    });
}

void changeZone(host::TBooks& books, const TZoneOptions& options)
{
    const QString name = QString::fromStdString(options.name);
    books.renameZone(name, QString::fromStdString(options.newName));
    complain(
        QStringLiteral(
            "A club's file with gates of the zone \"%1\" has to be changed, too, before the club starts or "
            "reads it again.")
            .arg(name));
}

void removeZone(host::TBooks& books, const TZoneOptions& options)
{
    books.removeZone(QString::fromStdString(options.name));
}

void addGate(host::TBooks& books, const TGateOptions& options)
{
    books.addGate({QString::fromStdString(options.address), QString::fromStdString(options.zone),
                   host::readDirection(QString::fromStdString(options.direction))});
}

void changeGate(host::TBooks& books, const TGateOptions& options)
{
    if (options.zone.empty() && options.direction.empty()) {
        throw platform::Exception(QStringLiteral("Nothing to change was given: --zone or --direction"));
    }
    const auto zone =
        options.zone.empty() ? std::nullopt : std::optional(QString::fromStdString(options.zone));
    const auto direction =
        options.direction.empty()
            ? std::nullopt
            : std::optional(host::readDirection(QString::fromStdString(options.direction)));
    books.changeGate(QString::fromStdString(options.address), zone, direction);
}

void removeGate(host::TBooks& books, const TGateOptions& options)
{
    books.removeGate(QString::fromStdString(options.address));
}

void addProduct(host::TBooks& books, const TProductOptions& options)
{
    books.addProduct(QString::fromStdString(options.name),
                     host::readAmount(QString::fromStdString(options.price)));
}

void changeProduct(host::TBooks& books, const TProductOptions& options)
{
    if (!options.newName && !options.newPrice) {
        throw platform::Exception(QStringLiteral("Nothing to change was given: --name or --price"));
    }
    const auto price = options.newPrice
                           ? std::optional(host::readAmount(QString::fromStdString(*options.newPrice)))
                           : std::nullopt;
    books.changeProduct(QString::fromStdString(options.name), given(options.newName), price);
}

void removeProduct(host::TBooks& books, const TProductOptions& options)
{
    books.removeProduct(QString::fromStdString(options.name));
}

} // namespace

void addZoneCommand(CLI::App& app, TCommand& chosen)
{
    TBookVerbs zone(app, chosen, "zone", "Zones of the club: add, change, remove, list, import");
    const auto options = std::make_shared<TZoneOptions>();
    CLI::App& adding = zone.verb("add", "Add zones", options, addZones);
    adding.add_option("name", options->names, "Such as hall")->required()->type_name("NAME");
    CLI::App& changing =
        zone.verb("change", "Rename a zone; gates and memberships follow", options, changeZone);
    changing.add_option("zone", options->name, "Its name")->required()->type_name("ZONE");
    changing.add_option("--name", options->newName, "The new name")->required()->type_name("NAME");
    CLI::App& removing = zone.verb("remove", "Remove a zone that nothing needs", options, removeZone);
    removing.add_option("zone", options->name, "Its name")->required()->type_name("ZONE");
    zone.tables(host::TBookKind::Zones, [](host::TBooks& books) { return books.zones(); });
}

void addGateCommand(CLI::App& app, TCommand& chosen)
{
    TBookVerbs gate(app, chosen, "gate", "Gates of the club: add, change, remove, list, import");
    const auto options = std::make_shared<TGateOptions>();
    CLI::App& adding = gate.verb("add", "Add a gate", options, addGate);
    adding.add_option("address", options->address, "01A on a line of classic controllers, 101T on a bus")
        ->required()
        ->type_name("ADDRESS");
    adding.add_option("zone", options->zone, "The zone that it leads into or out of")
        ->required()
        ->type_name("ZONE");
    adding.add_option("direction", options->direction, "inner is a door inside the club")
        ->required()
        ->type_name("in|out|inner");
    CLI::App& changing = gate.verb("change", "Change a gate; what is not given stays", options, changeGate);
    changing.add_option("address", options->address, "Its address")->required()->type_name("ADDRESS");
    changing.add_option("--zone", options->zone, "The zone that it leads into or out of")->type_name("ZONE");
    changing.add_option("--direction", options->direction, "Which way it leads")->type_name("in|out|inner");
    CLI::App& removing = gate.verb("remove", "Remove a gate: it refuses every card", options, removeGate);
    removing.add_option("address", options->address, "Its address")->required()->type_name("ADDRESS");
    gate.tables(host::TBookKind::Gates, [](host::TBooks& books) { return books.gates(); });
}

void addProductCommand(CLI::App& app, TCommand& chosen)
{
    TBookVerbs product(app, chosen, "product", "Goods sold by weight: add, change, remove, list, import");
    const auto options = std::make_shared<TProductOptions>();
    CLI::App& adding = product.verb("add", "Add a product", options, addProduct);
    adding.add_option("name", options->name, "Such as nuts")->required()->type_name("NAME");
    adding.add_option("price", options->price, "Of a kilogram, such as 12.50")
        ->required()
        ->type_name("AMOUNT");
    CLI::App& changing =
        product.verb("change", "Change a product; what is not given stays", options, changeProduct);
    changing.add_option("product", options->name, "Its name")->required()->type_name("PRODUCT");
    changing.add_option("--name", options->newName, "The new name")->type_name("NAME");
    changing.add_option("--price", options->newPrice, "The new price of a kilogram")->type_name("AMOUNT");
    CLI::App& removing =
        product.verb("remove", "Remove a product; what was sold stays", options, removeProduct);
    removing.add_option("product", options->name, "Its name")->required()->type_name("PRODUCT");
    product.tables(host::TBookKind::Products, [](host::TBooks& books) { return books.products(); });
}

} // namespace tnv5::cli
