// What shells and manuals need to know of the command line, from the command line itself.

#include "apps/tnv5/commands.h"
#include "apps/tnv5/console.h"

#include <CLI/CLI.hpp>
#include <QStringList>
#include <memory>

namespace tnv5::cli {

namespace {

struct TCompletionOptions
{
    std::string what;
};

bool isShown(const CLI::App& command)
{
    return !command.get_group().empty();
}

/// Calls `visit` with each command that is shown and its words, such as "member add", depth first.
void walk(const CLI::App& app, const QStringList& words,
          const std::function<void(const CLI::App&, const QStringList&)>& visit)
{
    for (const CLI::App* each : app.get_subcommands({})) {
        if (isShown(*each)) {
            const QStringList deeper = words + QStringList{QString::fromStdString(each->get_name())};
            visit(*each, deeper);
            walk(*each, deeper, visit);
        }
    }
}

/// Words that may follow a command: the commands below it and its options.
QString followers(const CLI::App& app)
{
    QStringList words;
    for (const CLI::App* each : app.get_subcommands({})) {
        if (isShown(*each)) {
            words.append(QString::fromStdString(each->get_name()));
        }
    }
    for (const CLI::Option* option : app.get_options()) {
        for (const std::string& name : option->get_lnames()) {
            words.append(QStringLiteral("--") + QString::fromStdString(name));
        }
    }
    return words.join(u' ');
}

// A table of words, and a function that looks up the longest command that has been written.
QString bashScript(const CLI::App& app)
{
    QString table = QStringLiteral("        [tnv5]=\"%1\"\n").arg(followers(app));
    walk(app, {}, [&table](const CLI::App& command, const QStringList& words) {
        table += QStringLiteral("        [\"tnv5 %1\"]=\"%2\"\n").arg(words.join(u' '), followers(command));
    });
    return QStringLiteral(R"(# Completion of tnv5 for bash, written by "tnv5 completion bash".
_tnv5() {
    local -A after=(
%1    )
    local word=${COMP_WORDS[COMP_CWORD]} path=tnv5 longer index
    for ((index = 1; index < COMP_CWORD; ++index)); do
        longer="$path ${COMP_WORDS[index]}"
        [[ -n ${after[$longer]+there} ]] && path=$longer
    done
    mapfile -t COMPREPLY < <(compgen -W "${after[$path]}" -- "$word")
    if [[ ${#COMPREPLY[@]} -eq 0 ]]; then
        mapfile -t COMPREPLY < <(compgen -f -- "$word") # ports and files
    fi
}
complete -o filenames -F _tnv5 tnv5
)")
        .arg(table);
}

int completion(const CLI::App& app, const TCompletionOptions& options)
{
    if (options.what == "bash") {
        draw(bashScript(app).split(u'\n').mid(0, bashScript(app).count(u'\n')));
    } else {
        walk(app, {}, [](const CLI::App& command, const QStringList& words) {
            draw({words.join(u' ') + u'\t' + QString::fromStdString(command.get_description()).simplified()});
        });
    }
    return kDone;
}

} // namespace

void addCompletionCommand(CLI::App& app, TCommand& chosen)
{
    const auto options = std::make_shared<TCompletionOptions>();
    CLI::App* const command = app.add_subcommand(
        "completion", "Write what completes commands in a shell, or the commands there are");
    command
        ->add_option("what", options->what,
                     "bash: a script to be read by bash; commands: all of them with what they do")
        ->required()
        ->check(CLI::IsMember({"bash", "commands"}).description(""))
        ->type_name("bash|commands");
    command->callback(
        [&app, &chosen, options] { chosen = [&app, options] { return completion(app, *options); }; });
}

} // namespace tnv5::cli
