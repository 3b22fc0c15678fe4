// The batch protocol against the fake plug-in.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "Batch.h"
#include "FakePlugin.h"

namespace {

using Json = nlohmann::ordered_json;

class BatchTest : public ::testing::Test {
  protected:
    Json ask(const std::string& line, bool expectBad = false) {
        bool bad = false;
        std::string reply = session.handle(line, bad);
        EXPECT_EQ(bad, expectBad) << line.substr(0, 200) << " -> " << reply;
        EXPECT_EQ(reply.find('\n'), std::string::npos) << reply;
        return Json::parse(reply);
    }
    fake::Plugin plugin;
    regscan::BatchSession session{plugin};
};

TEST_F(BatchTest, RequestsOfEveryKindAndBadLines) {
    struct Case {
        std::string request;
        const char* reply;  // null: a bad line, answered with an error alone
    } cases[] = {
        {R"({"expression": "Info"})", R"({"code":0,"result":"- of -"})"},
        // "" is a set property, an absent one is not set; a later duplicate wins.
        {R"({"expression": "Info", "properties": {"code": "", "field": "a", "field": "b"}})",
         R"({"code":0,"result":"b of "})"},
        {R"({"expression": "Keys", "properties": {"keys": "a,b,ü"}})",
         R"({"code":0,"result":["a","b","ü"]})"},
        {R"({"expression": "Keys", "properties": {"keys": "a", "rc": "-13006"}})",
         R"({"code":-13006,"result":["a"]})"},
        {R"({"expression": "info"})", R"({"code":-10008,"result":null})"},
        {R"({"config": {"b": "yes", "a": "", "c": "TRUE"}})", R"({"code":0})"},
        {R"({"names": true})", R"({"code":0,"names":["Info","Keys"]})"},
        // The \r of a CRLF line end is ignored; announcing again adds nothing.
        {"{\"names\": true}\r", R"({"code":0,"names":["Info","Keys"]})"},
        {"", nullptr},
        {"not json", nullptr},
        {"{}", nullptr},
        {R"({"expression": "Info", "names": true})", nullptr},
        {R"({"expression": "Info", "extra": 1})", nullptr},
        {R"({"expression": "Info", "properties": []})", nullptr},
        {R"({"expression": "Info", "properties": {"x": 1}})", nullptr},
        {R"({"expression": "Info", "properties": {"x": "a\u0000b"}})", nullptr},
        {R"({"config": {"a": true}})", nullptr},
        {R"({"names": false})", nullptr},
        {"{\"expression\": \"\xff\xfe\"}", nullptr},
        {"{\"expression\": \"Info\", \"properties\": " + std::string(100000, '[') +
             std::string(100000, ']') + "}",
         nullptr},
        {R"({"expression": "Info"})", R"({"code":0,"result":"- of -"})"},  // the session goes on
    };
    for (const Case& c : cases) {
        Json reply = ask(c.request, c.reply == nullptr);
        EXPECT_TRUE(c.reply ? reply == Json::parse(c.reply)
                            : reply.size() == 1 && !reply.value("error", "").empty())
            << c.request.substr(0, 200) << " -> " << reply.dump().substr(0, 200);
    }
    EXPECT_EQ(plugin.liveExpressions, 0);
    std::vector<std::pair<std::wstring, std::wstring>> settings = {
        {L"b", L"yes"}, {L"a", L""}, {L"c", L"TRUE"}};
    EXPECT_EQ(plugin.settings, settings) << "config pairs pass raw and in order, bad ones not";
}

TEST_F(BatchTest, UnknownWalksInHostOrderAndDropsUnchangedFields) {
    plugin.unknown = {
        {L"RPM", L"Acme", L"tool", L"1.0", L"/opt/tool/"},
        {L"DPKG", std::nullopt, L"lib", std::nullopt, std::nullopt},
        {std::nullopt, L"x", L"x", L"x", L"x"},  // no provider: no entry, the walk goes on
        {L"RPM", L"", L"", L"", L""},
    };
    Json expected = Json::parse(R"({"code":0,"size":4,"packages":[
        {"provider":"RPM","vendor":"Acme","name":"tool","version":"1.0","installDir":"/opt/tool/"},
        {"provider":"DPKG","name":"lib"},
        {"provider":"RPM","vendor":"","name":"","version":"","installDir":""}]})");
    EXPECT_EQ(ask(R"({"unknown": true})"), expected);

    plugin.unknown.resize(1);
    plugin.unknownNeverEnds = true;
    Json reply = ask(R"({"unknown": true})");
    EXPECT_EQ(reply["packages"].size(), 2u) << "bounded by getSize() + 1 positions";
    EXPECT_EQ(reply["truncated"], true);
    EXPECT_EQ(plugin.liveIterators, 0);
}

}  // namespace
