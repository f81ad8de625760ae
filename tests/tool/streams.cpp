// SPDX-License-Identifier: BSD-3-Clause
#include "streams.h"

#include <gtest/gtest.h>

bytes text(const std::string& characters) {
    return {characters.begin(), characters.end()};
}

bytes joined(std::initializer_list<bytes> parts) {
    bytes whole;
    for (const bytes& part : parts) {
        whole.insert(whole.end(), part.begin(), part.end());
    }
    return whole;
}

bytes little_endian(std::initializer_list<unsigned> words) {
    bytes made;
    for (const unsigned word : words) {
        made.push_back(static_cast<std::uint8_t>(word));
        made.push_back(static_cast<std::uint8_t>(word >> 8));
    }
    return made;
}

bytes big_endian(std::initializer_list<unsigned> words) {
    bytes made;
    for (const unsigned word : words) {
        made.push_back(static_cast<std::uint8_t>(word >> 8));
        made.push_back(static_cast<std::uint8_t>(word));
    }
    return made;
}

void expect_silent(const scratch_folder& folder, const std::vector<std::string>& arguments) {
    std::vector<std::string> quiet = arguments;
    quiet.push_back("-q");
    const outcome result = folder.qvr(quiet);
    EXPECT_EQ(result.code, 0) << result.err;
    EXPECT_EQ(result.err, "");
}

void expect_failure(const scratch_folder& folder, const std::vector<std::string>& arguments, int code,
                    const std::string& message, const std::string& hint) {
    const std::vector<std::string> before = folder.names();
    const outcome result = folder.qvr(arguments);
    EXPECT_EQ(result.code, code) << result.err;
    EXPECT_TRUE(holds(result.err, message)) << result.err;
    EXPECT_TRUE(holds(result.err, "\nhint: " + hint)) << result.err;
    EXPECT_EQ(folder.names(), before);
}
