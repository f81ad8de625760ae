// SPDX-License-Identifier: BSD-3-Clause
#include "arguments.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <deque>
#include <map>
#include <numeric>
#include <utility>

namespace qvr {

using word_lists = std::map<const CLI::Option*, std::vector<std::string>>;

struct parsed_command {
    CLI::App* app = nullptr;
    std::function<void()> run;
    word_lists words;
};

namespace {

constexpr const char* k_general_group = "Options";

// Groups are one blank line apart, and never two.
class help_formatter : public CLI::Formatter {
  public:
    std::string make_help(const CLI::App* app, std::string name, CLI::AppFormatMode mode) const override {
        std::string help = CLI::Formatter::make_help(app, std::move(name), mode);
        for (std::size_t at = help.find("\n\n\n"); at != std::string::npos; at = help.find("\n\n\n", at)) {
            help.erase(at, 1);
        }
        return help;
    }
    // One that the parser lets pass is needed all the same: only the command can say where it stands.
    std::string make_option_usage(const CLI::Option* option) const override {
        const std::string usage = CLI::Formatter::make_option_usage(option);
        return option->get_required() ? usage : usage.substr(1, usage.size() - 2);
    }
};

argument_description describe_option(const CLI::Option& option) {
    argument_description argument;
    argument.positional = option.get_positional();
    if (argument.positional) {
        argument.names = {option.get_name(true)};
    }
    for (const std::string& letter : option.get_snames()) {
        argument.names.push_back("-" + letter);
    }
    for (const std::string& name : option.get_lnames()) {
        argument.names.push_back("--" + name);
    }
    const bool flag = option.get_items_expected_max() == 0;
    argument.value = flag || argument.positional ? "" : option.get_type_name();
    argument.group = option.get_group();
    argument.help = option.get_description();
    argument.required = option.get_required() || argument.positional;
    argument.repeated = !flag && option.get_items_expected_max() > 1;
    return argument;
}

std::vector<argument_description> describe_options(const CLI::App& app, const word_lists& words) {
    std::vector<argument_description> arguments;
    for (const CLI::Option* option : app.get_options()) {
        if (!option->get_group().empty()) {
            arguments.push_back(describe_option(*option));
            const auto offered = words.find(option);
            if (offered != words.end()) {
                arguments.back().words = offered->second;
            }
        }
    }
    return arguments;
}

// Letters to put in, take out or change until one word is the other.
std::size_t steps_between(const std::string& one, const std::string& other) {
    std::vector<std::size_t> steps(other.size() + 1);
    std::iota(steps.begin(), steps.end(), std::size_t{0});
    for (std::size_t i = 0; i < one.size(); ++i) {
        std::size_t diagonal = std::exchange(steps[0], i + 1);
        for (std::size_t j = 0; j < other.size(); ++j) {
            const std::size_t changed = diagonal + (one[i] == other[j] ? 0 : 1);
            diagonal = steps[j + 1];
            steps[j + 1] = std::min({changed, diagonal + 1, steps[j] + 1});
        }
    }
    return steps.back();
}

[[noreturn]] void refuse_command(const std::string& word, const std::deque<parsed_command>& commands) {
    constexpr std::size_t k_most_steps = 2;
    std::string hint = "'qvr --help' lists the commands";
    std::size_t least = k_most_steps + 1;
    for (const parsed_command& candidate : commands) {
        const std::string name = candidate.app->get_name();
        const std::size_t steps = steps_between(word, name);
        if (!candidate.app->get_group().empty() && steps < least && steps < word.size()) {
            least = steps;
            hint = "did you mean '" + name + "'? 'qvr --help' lists the commands";
        }
    }
    fail_usage("there is no command '" + word + "'", hint);
}

std::string complaint(const CLI::ParseError& error, const std::vector<std::string>& leftover, bool no_command) {
    if (leftover.empty() || (!no_command && !dynamic_cast<const CLI::ExtrasError*>(&error))) {
        return no_command ? "a command is needed" : error.what();
    }
    // In the order in which they were typed, which the parser's own message turns round.
    std::string text = leftover.size() == 1 ? "this argument was not expected:" : "these arguments were not expected:";
    for (const std::string& word : leftover) {
        text += " " + word;
    }
    return text;
}

// "help encode" is "encode --help".
std::vector<std::string> words_of(int argc, char** argv) {
    std::vector<std::string> words(argv + std::min(argc, 1), argv + argc);
    if (!words.empty() && words.front() == "help") {
        words.erase(words.begin());
        words.emplace_back("--help");
    }
    std::reverse(words.begin(), words.end());  // as the parser wants them
    return words;
}

}  // namespace

struct command_line::parser_state {
    parser_state(const char* about, const char* name) : app(about, name) {}

    CLI::App app;
    std::string more;
    std::deque<parsed_command> commands;  // argument lists point to them
};

void argument_list::explain(const char* text) {
    command->app->footer(text);
}

void argument_list::positional(const char* name, std::string& to, const char* help) {
    command->app->add_option(name, to, help)->required()->type_name("");
}

void argument_list::positionals(const char* name, std::vector<std::string>& to, const char* help) {
    command->app->add_option(name, to, help)->required()->type_name("");
}

void argument_list::settled_positional(const char* name, std::string& to, const char* help) {
    command->app->add_option(name, to, help)->type_name("REQUIRED");
}

void argument_list::text(const char* name, std::string& to, const char* value_name, const char* help) {
    command->app->add_option(name, to, help)->type_name(value_name);
}

void argument_list::texts(const char* name, std::vector<std::string>& to, const char* value_name, const char* help) {
    command->app->add_option(name, to, help)->type_name(value_name);
}

void argument_list::number(const char* name, std::uint32_t& to, const char* help, std::uint32_t most) {
    command->app->add_option(name, to, help)->type_name("N")->check(CLI::Range(std::uint32_t{0}, most).description(""));
}

void argument_list::number(const char* name, std::optional<std::uint32_t>& to, const char* help) {
    command->app->add_option(name, to, help)->type_name("N");
}

void argument_list::number(const char* name, double& to, const char* help, double least, double most) {
    command->app->add_option(name, to, help)->type_name("N")->check(CLI::Range(least, most).description(""));
}

void argument_list::choice(const char* name, std::string& to, const std::vector<std::string>& words,
                           const char* value_name, const char* help) {
    std::string said = help;
    for (const std::string& word : words) {
        said += (&word == &words.front() ? ":\n" : ", ") + word;
    }
    text(name, to, value_name, (said + (to.empty() ? "" : "; default: " + to)).c_str());
    command->app->get_option(name)->transform(CLI::IsMember(words, CLI::ignore_case).description(""));
    suggest(name, words);
}

void argument_list::suggest(const char* name, std::vector<std::string> words) {
    command->words[command->app->get_option(name)] = std::move(words);
}

void argument_list::group(const char* title) {
    command->app->option_defaults()->group(title ? title : k_general_group);
}

void argument_list::hide() {
    command->app->group("");
}

void argument_list::flag(const char* name, bool& to, const char* help) {
    command->app->add_flag(name, to, help);
}

void argument_list::needs(const char* name, const char* other) {
    command->app->get_option(name)->needs(command->app->get_option(other));
}

void argument_list::excludes(const char* name, const char* other) {
    command->app->get_option(name)->excludes(command->app->get_option(other));
}

void argument_list::require(const char* name) {
    command->app->get_option(name)->required();
}

command_line::command_line(const char* about, const char* more, const std::string& version)
    : state(std::make_unique<parser_state>(about, "qvr")) {
    state->more = more;
    state->app.footer(state->more + "\n" + exit_codes_line());
    state->app.set_version_flag("--version", version);
    state->app.require_subcommand(1);
    state->app.formatter(std::make_shared<help_formatter>());
    state->app.get_formatter()->column_width(34);
    state->app.get_formatter()->label("SUBCOMMAND", "COMMAND");
}

command_line::~command_line() = default;

argument_list command_line::add_command(const char* name, const char* about, std::function<void()> run) {
    state->commands.push_back({state->app.add_subcommand(name, about)->group("Commands"), std::move(run), {}});
    return argument_list(state->commands.back());
}

program_description command_line::describe() const {
    program_description program;
    program.name = state->app.get_name();
    program.about = state->app.get_description();
    program.more = state->more;
    program.options = describe_options(state->app, {});
    for (const parsed_command& command : state->commands) {
        const CLI::App& app = *command.app;
        if (!app.get_group().empty()) {
            program.commands.push_back(
                {app.get_name(), app.get_description(), app.get_footer(), describe_options(app, command.words)});
        }
    }
    return program;
}

void command_line::run(int argc, char** argv) {
    CLI::App& app = state->app;
    try {
        app.parse(words_of(argc, argv));
    } catch (const CLI::ParseError& error) {
        const std::vector<std::string> leftover = app.remaining(true);
        const std::vector<CLI::App*> chosen = app.get_subcommands();
        if (chosen.empty() && !leftover.empty() && leftover.front().rfind('-', 0) != 0) {
            refuse_command(leftover.front(), state->commands);
        }
        if (error.get_exit_code() == 0) {
            app.exit(error);
            return;
        }
        const std::string named = chosen.empty() ? "" : " " + chosen.back()->get_name();
        fail_usage(complaint(error, leftover, chosen.empty()), "'qvr" + named + " --help' shows what can be given");
    }
    for (const parsed_command& candidate : state->commands) {
        if (candidate.app->parsed()) {
            candidate.run();
        }
    }
}

}  // namespace qvr
