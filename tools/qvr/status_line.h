// SPDX-License-Identifier: BSD-3-Clause
//
// Standard error as a terminal shows it: messages, and below them one line that is written over again and again.
#pragma once

#include <string>

namespace qvr {

// Whether standard error is a terminal on which a line can be written over.
bool has_status_line();
// Columns of the terminal; 80 when it does not say.
unsigned status_columns();
// Any thread may call these. A message, which ends in a line feed, never runs into the line.
void show_status(const std::string& line);
void clear_status();
void print_message(const std::string& text);

}  // namespace qvr
