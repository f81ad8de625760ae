// SPDX-License-Identifier: BSD-3-Clause
//
// Completions, asked for as each shell asks for them.
#include <gtest/gtest.h>

#include <algorithm>

#include "help_texts.h"
#include "process.h"

namespace {

using names = std::vector<std::string>;

void write_script(const scratch_folder& folder, const std::string& shell, const std::string& name) {
    const outcome made = folder.qvr({"generate", shell});
    ASSERT_EQ(made.code, 0) << made.err;
    folder.write(name, bytes(made.out.begin(), made.out.end()));
}

// What stands on the line behind "qvr", and what is offered for the last word, sorted.
const struct {
    names words;
    names offered;
} k_cases[] = {{{"en"}, {"encode"}},
               {{"un"}, {"unwrap"}},
               {{"--ver"}, {"--version"}},
               {{"encode", "--ord"}, {"--order"}},
               {{"encode", "--row-bytes"}, {"--row-bytes", "--row-bytes2"}},
               {{"encode", "--order", "UYV"}, {"UYVY", "UYVY+A"}},
               {{"encode", "--order", "v2"}, {"v210", "v216"}},
               {{"decode", "a.qvr", "--type", "Fl"}, {"Float"}},
               {{"encode", "-q", "--type", "U1"}, {"U10", "U10Packed", "U12", "U16"}},
               {{"view", "--matrix", "bt"}, {"bt2020", "bt601", "bt709"}},
               {{"view", "a.qvr", "--tran"}, {"--transfer"}},
               {{"bench", "--alpha"}, {"--alpha-rle"}}};

// " one two", with a quotation mark on both sides of each.
std::string joined(const names& words, const std::string& mark = "") {
    std::string text;
    for (const std::string& word : words) {
        text += " " + mark + word + mark;
    }
    return text;
}

names sorted_lines(const std::string& text) {
    names lines = lines_of(text);
    std::sort(lines.begin(), lines.end());
    return lines;
}

class bash_completion : public testing::Test {
  protected:
    void SetUp() override { write_script(folder, "bash", "qvr.bash"); }

    names complete(const names& words) {
        const std::string script = "set -u; source ./qvr.bash; COMP_WORDS=(qvr" + joined(words, "'") +
                                   "); COMP_CWORD=" + std::to_string(words.size()) +
                                   "; _qvr; printf '%s\\n' \"${COMPREPLY[@]}\"";
        const outcome result = folder.command({"bash", "--norc", "-c", script});
        EXPECT_EQ(result.code, 0) << result.err;
        EXPECT_EQ(result.err, "");
        names offered = sorted_lines(result.out);
        offered.erase(std::remove(offered.begin(), offered.end(), ""), offered.end());
        return offered;
    }

    const scratch_folder folder;
};

TEST_F(bash_completion, words_are_completed) {
    for (const auto& one : k_cases) {
        EXPECT_EQ(complete(one.words), one.offered) << joined(one.words);
    }
}

TEST_F(bash_completion, every_command_and_option_is_offered) {
    const names commands = complete({""});
    for (const auto& [command, options] : read_all_help(folder)) {
        EXPECT_EQ(std::count(commands.begin(), commands.end(), command), 1) << command;
        const names offered = complete({command, "-"});
        for (const help_entry& option : options) {
            for (const std::string& name : option.names) {
                EXPECT_EQ(std::count(offered.begin(), offered.end(), name), 1) << command << " " << name;
            }
        }
    }
}

TEST_F(bash_completion, values_behind_an_equals_sign_are_completed) {
    EXPECT_EQ(complete({"view", "--matrix", "=", "bt6"}), names{"bt601"});
    EXPECT_EQ(complete({"view", "--range", "="}), (names{"auto", "full", "limited"}));
}

TEST_F(bash_completion, folders_are_offered_where_one_is_wanted) {
    ASSERT_EQ(folder.command({"mkdir", "frames"}).code, 0);
    folder.write("free.txt", {});
    EXPECT_EQ(complete({"unwrap", "a.qvr", "--into", "fr"}), names{"frames"});
}

TEST_F(bash_completion, files_are_left_to_the_shell) {
    folder.write("photo.png", {});
    EXPECT_EQ(complete({"encode", "ph"}), names{});
    EXPECT_EQ(complete({"wrap", "--tiles", "ph"}), names{});
    const outcome asked = folder.command({"bash", "--norc", "-c", "source ./qvr.bash; complete -p qvr"});
    EXPECT_EQ(asked.out, "complete -o bashdefault -o default -F _qvr qvr\n");
}

class fish_completion : public testing::Test {
  protected:
    void SetUp() override {
        if (!is_installed("fish")) {
            GTEST_SKIP() << "there is no fish to complete with";
        }
        write_script(folder, "fish", "qvr.fish");
    }

    // Without the descriptions.
    names complete(const std::string& line) {
        const outcome result =
            folder.command({"env", "HOME=" + folder.path(), "fish", "--no-config", "-c",
                            "source qvr.fish; complete -C \"" + line + "\" | string split -f 1 \\t"});
        EXPECT_EQ(result.err, "");
        return sorted_lines(result.out);
    }

    const scratch_folder folder;
};

TEST_F(bash_completion, values_that_are_no_files_are_not_left_to_the_shell) {
    const std::string script = folder.command({"cat", "qvr.bash"}).out;
    for (const char* option : {"--range", "--chunk", "--rate"}) {
        EXPECT_TRUE(holds(script, std::string(option) + "\") compopt +o default")) << option;
    }
}

TEST_F(fish_completion, it_is_good_fish) {
    const outcome result = folder.command({"fish", "--no-config", "-n", "qvr.fish"});
    EXPECT_EQ(result.code, 0) << result.err;
    EXPECT_EQ(result.err, "");
}

TEST_F(fish_completion, words_are_completed) {
    for (const auto& one : k_cases) {
        EXPECT_EQ(complete("qvr" + joined(one.words)), one.offered) << joined(one.words);
    }
    EXPECT_EQ(complete("qvr encode --size "), names{});
}

TEST_F(fish_completion, every_command_and_option_is_offered) {
    const names commands = complete("qvr ");
    for (const auto& [command, options] : read_all_help(folder)) {
        EXPECT_EQ(std::count(commands.begin(), commands.end(), command), 1) << command;
        const names offered = complete("qvr " + command + " --");
        for (const help_entry& option : options) {
            EXPECT_EQ(std::count(offered.begin(), offered.end(), option.names.back()), 1)
                << command << " " << option.names.back();
        }
    }
}

class zsh_completion : public testing::Test {
  protected:
    void SetUp() override {
        if (!is_installed("zsh")) {
            GTEST_SKIP() << "there is no zsh to complete with";
        }
        write_script(folder, "zsh", "_qvr");
    }

    const scratch_folder folder;
};

TEST_F(zsh_completion, it_is_good_zsh) {
    const outcome result = folder.command({"zsh", "-f", "-n", "_qvr"});
    EXPECT_EQ(result.code, 0) << result.err;
    EXPECT_EQ(result.err, "");
}

TEST_F(zsh_completion, every_command_and_option_is_in_it) {
    const bytes content = folder.read("_qvr");
    const std::string script(content.begin(), content.end());
    for (const auto& [command, options] : read_all_help(folder)) {
        EXPECT_TRUE(holds(script, "'" + command + ":")) << command;
        const std::size_t start = script.find("  " + command + ")\n");
        ASSERT_NE(start, std::string::npos) << command;
        const std::string section = script.substr(start, script.find(";;", start) - start);
        for (const help_entry& option : options) {
            for (const std::string& name : option.names) {
                EXPECT_TRUE(holds(section, ")" + name + "[") || holds(section, ")" + name + "=[") ||
                            holds(section, ")" + name + "+["))
                    << command << " " << name;
            }
        }
    }
}

// An interactive shell in a terminal of its own, to which each line and a tab are typed. What it offers is written to a
// file, one line for each line that was typed.
constexpr const char* k_session = R"(
zmodload zsh/zpty || exit 77
zpty shell "env PS1= TERM=dumb HISTFILE= zsh -f -i"
zpty -w shell 'PS1=; fpath=($PWD $fpath); autoload -Uz compinit; compinit -D -u'
zpty -w shell 'compadd() {
    local -a found; builtin compadd -O found "$@"; offered+=($found)
    builtin compadd "$@" }'
zpty -w shell 'show() {
    offered=(); zle complete-word; print -r -- ${(ou)offered} >>offers; zle kill-whole-line }
zle -N show; bindkey "^I" show; print ready-"now"'
zpty -r shell ignored '*ready-now*'
typed=0
for line in "$@"; do
    zpty -n -w shell "$line"$'\t'
    typed=$((typed + 1))
    until [[ -f offers && $(wc -l <offers) -ge $typed ]]; do sleep 0.02; done
done
zpty -d shell
cat offers
)";

TEST_F(zsh_completion, words_are_completed) {
    names arguments = {"timeout", "300", "zsh", "-f", "-c", k_session, "zsh"};
    names wanted;
    for (const auto& one : k_cases) {
        arguments.push_back("qvr" + joined(one.words));
        wanted.push_back(joined(one.offered).substr(1));
    }
    const outcome result = folder.command(arguments);
    if (result.code == 77) {
        GTEST_SKIP() << "this zsh has no terminals of its own";
    }
    EXPECT_EQ(result.code, 0) << result.err;
    EXPECT_EQ(lines_of(result.out), wanted);
}

}  // namespace
