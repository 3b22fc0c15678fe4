// The batch protocol against the fake plug-in: every request kind, property
// handling, the unknown-software walk and bad lines.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <sstream>

#include "Batch.h"
#include "FakePlugin.h"

namespace {

using Json = nlohmann::ordered_json;

class BatchTest : public ::testing::Test {
  protected:
    Json ask(const std::string& line, bool expectBad = false) {
        bool bad = false;
        std::string reply = session.handle(line, bad);
        EXPECT_EQ(bad, expectBad) << line << " -> " << reply;
        EXPECT_EQ(reply.find('\n'), std::string::npos) << reply;
        return Json::parse(reply);
    }
    fake::Plugin plugin;
    regscan::BatchSession session{plugin};
};

TEST_F(BatchTest, ExpressionRequests) {
    struct Case {
        const char* request;
        const char* reply;
    } cases[] = {
        {R"({"expression": "Echo"})", R"({"code":0,"result":"code=-|field=-|x=-"})"},
        {R"({"expression": "Echo", "properties": {}})",
         R"({"code":0,"result":"code=-|field=-|x=-"})"},
        // "" is a set property, an absent one is not set.
        {R"({"expression": "Echo", "properties": {"code": "", "x": "1"}})",
         R"({"code":0,"result":"code=|field=-|x=1"})"},
        {R"({"expression": "Echo", "properties": {"rc": "-13000"}})",
         R"({"code":-13000,"result":"code=-|field=-|x=-"})"},
        {R"({"expression": "Keys", "properties": {"keys": "a,b,ü"}})",
         R"({"code":0,"result":["a","b","ü"]})"},
        {R"({"expression": "Keys", "properties": {"keys": ""}})", R"({"code":0,"result":[]})"},
        {R"({"expression": "Keys", "properties": {"keys": "a", "rc": "-13006"}})",
         R"({"code":-13006,"result":["a"]})"},
        {R"({"expression": "Nope"})", R"({"code":-10008,"result":null})"},
        {R"({"expression": "echo"})", R"({"code":-10008,"result":null})"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(ask(c.request), Json::parse(c.reply)) << c.request;
    }
    EXPECT_EQ(plugin.liveExpressions, 0);
}

TEST_F(BatchTest, LaterDuplicatePropertyWins) {
    EXPECT_EQ(ask(R"({"expression": "Echo", "properties": {"x": "1", "x": "2"}})")["result"],
              "code=-|field=-|x=2");
}

TEST_F(BatchTest, ConfigPassesPairsRawAndInOrder) {
    EXPECT_EQ(ask(R"({"config": {"b": "yes", "a": "", "c": "TRUE"}})"),
              Json::parse(R"({"code":0})"));
    std::vector<std::pair<std::wstring, std::wstring>> expected = {
        {L"b", L"yes"}, {L"a", L""}, {L"c", L"TRUE"}};
    EXPECT_EQ(plugin.settings, expected);
}

TEST_F(BatchTest, NamesInitializesAndListsInOrder) {
    EXPECT_EQ(ask(R"({"names": true})"), Json::parse(R"({"code":0,"names":["Echo","Keys"]})"));
    EXPECT_EQ(ask(R"({"names": true})")["names"].size(), 2u) << "a second request adds nothing";
}

TEST_F(BatchTest, UnknownWalksInHostOrderAndDropsUnchangedFields) {
    plugin.unknown = {
        {L"RPM", L"Acme", L"tool", L"1.0", L"/opt/tool/"},
        {L"DPKG", std::nullopt, L"lib", std::nullopt, std::nullopt},
        // No provider at this position: no entry, and the walk goes on.
        {std::nullopt, L"x", L"x", L"x", L"x"},
        {L"RPM", L"", L"", L"", L""},
    };
    Json reply = ask(R"({"unknown": true})");
    Json expected = Json::parse(R"({"code":0,"size":4,"packages":[
        {"provider":"RPM","vendor":"Acme","name":"tool","version":"1.0","installDir":"/opt/tool/"},
        {"provider":"DPKG","name":"lib"},
        {"provider":"RPM","vendor":"","name":"","version":"","installDir":""}]})");
    EXPECT_EQ(reply, expected) << reply.dump();
    EXPECT_EQ(plugin.liveIterators, 0);
}

TEST_F(BatchTest, UnknownOnEmptyAndEndlessIterators) {
    EXPECT_EQ(ask(R"({"unknown": true})"), Json::parse(R"({"code":0,"size":0,"packages":[]})"));

    plugin.unknown = {{L"RPM", L"v", L"n", L"1", L"/"}};
    plugin.unknownNeverEnds = true;
    Json reply = ask(R"({"unknown": true})");
    EXPECT_EQ(reply["packages"].size(), 2u) << "bounded by getSize() + 1 positions";
    EXPECT_EQ(reply["truncated"], true);
    EXPECT_EQ(plugin.liveIterators, 0);
}

TEST_F(BatchTest, BadLinesGetErrorRepliesAndTheSessionGoesOn) {
    const char* bad[] = {
        "",
        "   ",
        "not json",
        R"({"expression": "Echo")",
        "[1, 2]",
        R"("text")",
        "{}",
        R"({"colour": "red"})",
        R"({"expression": "Echo", "names": true})",
        R"({"expression": 42})",
        R"({"expression": "Echo", "extra": 1})",
        R"({"expression": "Echo", "properties": []})",
        R"({"expression": "Echo", "properties": {"x": 1}})",
        R"({"expression": "Echo", "properties": {"x": null}})",
        R"({"expression": "Echo", "properties": {"x": "a\u0000b"}})",
        R"({"expression": "Ec\u0000ho"})",
        R"({"config": {"a": true}})",
        R"({"config": "a=b"})",
        R"({"names": false})",
        R"({"names": 1})",
        R"({"unknown": "yes"})",
        "{\"expression\": \"\xff\xfe\"}",
    };
    for (const char* line : bad) {
        Json reply = ask(line, true);
        ASSERT_TRUE(reply.contains("error")) << line;
        EXPECT_EQ(reply.size(), 1u) << line;
        EXPECT_FALSE(reply["error"].get<std::string>().empty()) << line;
    }
    EXPECT_EQ(ask(R"({"expression": "Echo"})")["code"], 0);
    EXPECT_TRUE(plugin.settings.empty());
}

TEST_F(BatchTest, RunAnswersEveryLineInOrderAndReportsBadOnes) {
    std::string longKey(1 << 20, 'k');
    std::istringstream in(
        "{\"names\": true}\nbad\n{\"expression\": \"Keys\", \"properties\": "
        "{\"keys\": \"" +
        longKey + "\"}}\r\n{\"expression\": \"Nope\"}");
    std::ostringstream out;
    EXPECT_EQ(session.run(in, out), 1);
    std::istringstream replies(out.str());
    std::vector<Json> lines;
    for (std::string line; std::getline(replies, line);) {
        lines.push_back(Json::parse(line));
    }
    ASSERT_EQ(lines.size(), 4u) << out.str().substr(0, 300);
    EXPECT_TRUE(lines[0].contains("names"));
    EXPECT_TRUE(lines[1].contains("error"));
    EXPECT_EQ(lines[2]["result"][0].get<std::string>().size(), longKey.size());
    EXPECT_EQ(lines[3]["code"], -10008);

    std::istringstream good("{\"names\": true}\n");
    EXPECT_EQ(session.run(good, out), 0);
}

TEST_F(BatchTest, DeeplyNestedInputIsRefusedWithoutCrashing) {
    std::string deep = "{\"expression\": \"Echo\", \"properties\": " + std::string(100000, '[') +
                       std::string(100000, ']') + "}";
    EXPECT_TRUE(ask(deep, true).contains("error"));
}

}  // namespace
