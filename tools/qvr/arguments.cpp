// SPDX-License-Identifier: BSD-3-Clause
#include "arguments.h"

#include <CLI/CLI.hpp>
#include <deque>
#include <utility>

namespace qvr {

struct parsed_command {
    CLI::App* app = nullptr;
    std::function<void()> run;
};

struct command_line::parser_state {
    parser_state(const char* about, const char* name) : app(about, name) {}

    CLI::App app;
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

void argument_list::optional_positional(const char* name, std::string& to, const char* help) {
    command->app->add_option(name, to, help)->type_name("");
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
    state->app.footer(more);
    state->app.set_version_flag("--version", version);
    state->app.require_subcommand(1);
    state->app.get_formatter()->column_width(34);
}

command_line::~command_line() = default;

argument_list command_line::add_command(const char* name, const char* about, std::function<void()> run) {
    state->commands.push_back({state->app.add_subcommand(name, about), std::move(run)});
    return argument_list(state->commands.back());
}

void command_line::run(int argc, char** argv) {
    CLI::App& app = state->app;
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() == 0) {
            app.exit(error);
            return;
        }
        std::string named;
        for (const CLI::App* chosen : app.get_subcommands()) {
            named = " " + chosen->get_name();
        }
        fail_usage(error.what(), "'qvr" + named + " --help' shows what can be given");
    }
    for (const parsed_command& candidate : state->commands) {
        if (candidate.app->parsed()) {
            candidate.run();
        }
    }
}

}  // namespace qvr
