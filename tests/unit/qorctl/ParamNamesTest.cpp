#include "operations/ParamNames.h"

#include <gmock/gmock.h>

#include <stdexcept>

#include "support/TempFolder.h"

using namespace qorctl;
using testing::HasSubstr;

namespace {

class ParamNames : public testing::Test {
protected:
    /// What is thrown over such a model.
    std::string whyNoModel(const std::string& text) {
        try {
            namesInModel(folder.write("model.json", text));
        } catch (const std::runtime_error& error) {
            return error.what();
        }
        return {};
    }

    TempFolder folder;
};

TEST_F(ParamNames, AModelTellsThemWithTheirLimits) {
    const auto params = namesInModel(folder.write(
        "model.json", R"({"parameters":[{"name":"Speed","limits":[0,8000.5],"value":1},)"
                      R"({"name":"Version","text":"4"}]})"));
    ASSERT_EQ(2u, params.size());
    EXPECT_EQ("Speed", params[0].name);
    EXPECT_EQ(0.0, params[0].lowest);
    EXPECT_EQ(8000.5, params[0].highest);
    EXPECT_EQ("Version", params[1].name);
    EXPECT_EQ(std::nullopt, params[1].lowest);
}

TEST_F(ParamNames, WhatIsNoModelIsToldWithItsPath) {
    for (const char* const text : {"", "{}", "[]", R"({"parameters":[{}]})",
                                   R"({"parameters":[{"name":"A","limits":[1]}]})"})
        EXPECT_THAT(whyNoModel(text), HasSubstr("model.json is no model")) << text;
    EXPECT_THROW(namesInModel(folder.pathOf("none.json")), std::runtime_error);
}

TEST_F(ParamNames, AListHasOnePerLine) {
    const auto params = namesInList(folder.write("names.txt", "Speed\r\n\n# no\n  Oil Level\t\nX"));
    ASSERT_EQ(3u, params.size());
    EXPECT_EQ("Speed", params[0].name);
    EXPECT_EQ("Oil Level", params[1].name);
    EXPECT_EQ("X", params[2].name);
    EXPECT_THROW(namesInList(folder.pathOf("none.txt")), std::runtime_error);
}

}  // namespace
