// The JSON form of overriding configurations. The values pass between two modules with a JSON library each: an
// exception of the library's must reach the host like one of the host's.

#include <functional>
#include <limits>
#include <memory>
#include <typeinfo>

#include <json/reader.h>
#include <json/value.h>

#include "orlindex/OverridingConfig.h"
#include "support/HostTest.h"

namespace OrlindexTest {

using namespace Kestrany::IdentityServices;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

Json::Value Parsed(const std::string& text)
{
    Json::Value value;
    const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
    std::string errors;
    EXPECT_TRUE(reader->parse(text.data(), text.data() + text.size(), &value, &errors)) << errors;
    return value;
}

/// A configuration in which every field is set.
CallConfig Filled()
{
    CallConfig call;
    call.interval = 1;
    call.failInterval = 2;
    call.minJitter = 3;
    call.maxJitter = 4;
    call.url = "before";
    return call;
}

CallConfig Read(const std::string& json)
{
    CallConfig call = Filled();
    call.FromJson(Parsed(json));
    return call;
}

std::string Shown(const CallConfig& call)
{
    return std::to_string(call.interval) + ' ' + std::to_string(call.failInterval) + ' ' +
           std::to_string(call.minJitter) + ' ' + std::to_string(call.maxJitter) + " <" + call.url + '>';
}

/// The exception of a call, as this module sees it: class and text.
std::string Raised(const std::function<void()>& call)
{
    try
    {
        call();
        return "nothing";
    }
    catch (const Json::Exception& error)
    {
        return std::string(typeid(error).name()) + ": " + error.what();
    }
}

/// Expects that reading `json` throws the exception that the host's own library throws for `conversion`, and that its
/// message contains `text`.
void ExpectRaised(const std::string& json, const std::function<void(const Json::Value&)>& conversion,
                  const std::string& text)
{
    SCOPED_TRACE(json);
    const Json::Value value = Parsed(json);
    const std::string raised = Raised([&value]() { Filled().FromJson(value); });
    EXPECT_EQ(raised, Raised([&]() { conversion(value); }));
    EXPECT_THAT(raised, HasSubstr(std::string(typeid(Json::LogicError).name()) + ": "));
    EXPECT_THAT(raised, HasSubstr(text));
}

constexpr const char* numberKeys[] = {"interval", "failInterval", "minJitter", "maxJitter"};

} // namespace

TEST(AutomationJson, EveryKeyIsReadIntoItsField)
{
    EXPECT_EQ(Shown(Read(R"({"interval": 11, "failInterval": -12, "minJitter": 13, "maxJitter": 14,
                             "url": "https://\u4e2d", "other": []})")),
              "11 -12 13 14 <https://\xE4\xB8\xAD>");
}

TEST(AutomationJson, ReadFromAnEmptyObjectAllIntegersAreZeroAndTheUrlIsEmpty)
{
    EXPECT_EQ(Shown(Read("{}")), "0 0 0 0 <>");
}

TEST(AutomationJson, NullIsReadAsAnEmptyObject)
{
    CallConfig call = Filled();
    call.FromJson(Json::Value());
    EXPECT_EQ(Shown(call), "0 0 0 0 <>");
}

TEST(AutomationJson, AMissingOrNullKeyOverwritesItsFieldToo)
{
    EXPECT_EQ(Shown(Read(R"({"interval": 11})")), "11 0 0 0 <>");
    EXPECT_EQ(Shown(Read(R"({"failInterval": 12})")), "0 12 0 0 <>");
    EXPECT_EQ(Shown(Read(R"({"minJitter": 13})")), "0 0 13 0 <>");
    EXPECT_EQ(Shown(Read(R"({"maxJitter": 14})")), "0 0 0 14 <>");
    EXPECT_EQ(Shown(Read(R"({"url": "u"})")), "0 0 0 0 <u>");
    EXPECT_EQ(Shown(Read(R"({"interval": null, "url": null})")), "0 0 0 0 <>");
}

TEST(AutomationJson, AFractionIsTruncated)
{
    EXPECT_EQ(Read(R"({"interval": 1.9})").interval, 1);
    EXPECT_EQ(Read(R"({"interval": -1.9})").interval, -1);
}

TEST(AutomationJson, WhatTheJsonLibraryConvertsIsConverted)
{
    EXPECT_EQ(Read(R"({"interval": true})").interval, 1);
    EXPECT_EQ(Read(R"({"interval": 2147483647})").interval, std::numeric_limits<std::int32_t>::max());
    EXPECT_EQ(Read(R"({"interval": -2147483648})").interval, std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ(Read(R"({"url": 17})").url, "17");
    EXPECT_EQ(Read(R"({"url": true})").url, "true");
}

TEST(AutomationJson, ATextWhereANumberBelongsRaisesTheJsonLibrarysError)
{
    for (const char* key : numberKeys)
        for (const char* value : {R"("11")", "[]", "{}"})
            ExpectRaised(
                std::string("{\"") + key + "\": " + value + '}',
                [key](const Json::Value& json) { static_cast<void>(json[key].asInt()); },
                "Value is not convertible to Int.");
}

TEST(AutomationJson, ANumberPast32BitsRaisesTheJsonLibrarysError)
{
    for (const char* key : numberKeys)
    {
        const auto asInt = [key](const Json::Value& json) { static_cast<void>(json[key].asInt()); };
        const std::string start = std::string("{\"") + key + "\": ";
        ExpectRaised(start + "2147483648}", asInt, "LargestInt out of Int range");
        ExpectRaised(start + "-2147483649}", asInt, "LargestInt out of Int range");
        ExpectRaised(start + "18446744073709551615}", asInt, "out of Int range");
        ExpectRaised(start + "1e300}", asInt, "double out of Int range");
    }
}

TEST(AutomationJson, AListWhereTheUrlBelongsRaisesTheJsonLibrarysError)
{
    for (const char* value : {"[]", "{}"})
        ExpectRaised(
            std::string("{\"url\": ") + value + '}',
            [](const Json::Value& json) { static_cast<void>(json["url"].asString()); },
            "Type is not convertible to string");
}

TEST(AutomationJson, AValueThatIsNeitherAnObjectNorNullRaisesTheErrorWordForWord)
{
    for (const char* json : {"[]", "[{}]", "17", "1.5", "true", R"("text")"})
    {
        CallConfig call = Filled();
        EXPECT_EQ(Raised([&]() { call.FromJson(Parsed(json)); }),
                  std::string(typeid(Json::LogicError).name()) +
                      ": in Json::Value::find(key, end, found): requires objectValue or nullValue")
            << json;
        EXPECT_EQ(Shown(call), Shown(Filled())) << json;
    }
}

TEST(AutomationJson, KeysAreReadInTheirOrder)
{
    // Fields before the failing key have their new values, those after it the old ones.
    const char* const keys[] = {"failInterval", "interval", "maxJitter", "minJitter"};
    const char* const shown[] = {"1 2 3 4 <before>", "1 0 3 4 <before>", "0 0 3 4 <before>", "0 0 3 0 <before>"};
    for (int i = 0; i < 4; ++i)
    {
        CallConfig call = Filled();
        EXPECT_THROW(call.FromJson(Parsed(std::string("{\"") + keys[i] + "\": []}")), Json::LogicError);
        EXPECT_EQ(Shown(call), shown[i]) << keys[i];
    }
    CallConfig call = Filled();
    EXPECT_THROW(call.FromJson(Parsed(R"({"url": []})")), Json::LogicError);
    EXPECT_EQ(Shown(call), "0 0 0 0 <before>");
}

TEST(AutomationJson, WritingGivesAnObjectOfTheFiveMembersInOrder)
{
    const Json::Value json = Read(R"({"interval": 11, "failInterval": -12, "minJitter": 13, "maxJitter": 14,
                                      "url": "https://\u4e2d"})")
                                 .ToJson();
    ASSERT_EQ(json.type(), Json::objectValue);
    EXPECT_THAT(json.getMemberNames(), ElementsAre("failInterval", "interval", "maxJitter", "minJitter", "url"));
    for (const char* key : numberKeys)
        EXPECT_EQ(json[key].type(), Json::intValue) << key;
    EXPECT_EQ(json["url"].type(), Json::stringValue);
    EXPECT_EQ(json["interval"].asInt(), 11);
    EXPECT_EQ(json["failInterval"].asInt(), -12);
    EXPECT_EQ(json["minJitter"].asInt(), 13);
    EXPECT_EQ(json["maxJitter"].asInt(), 14);
    EXPECT_EQ(json["url"].asString(), "https://\xE4\xB8\xAD");
}

TEST(AutomationJson, WhatWasReadFromAnEmptyObjectIsWrittenWithAllFiveKeys)
{
    EXPECT_EQ(Read("{}").ToJson(),
              Parsed(R"({"failInterval": 0, "interval": 0, "maxJitter": 0, "minJitter": 0, "url": ""})"));
}

TEST(AutomationJson, WhatIsWrittenIsReadBack)
{
    CallConfig call = Filled();
    call.interval = std::numeric_limits<std::int32_t>::min();
    call.url = std::string("a\0b", 3);
    CallConfig read;
    read.FromJson(call.ToJson());
    EXPECT_EQ(Shown(read), Shown(call));
}

TEST(AutomationJson, ThroughTheBaseClassEachKindUsesItsOwnMembers)
{
    CallConfig call;
    BackoffConfig backoff;
    backoff.jitter = 5;
    BaseConfig* const ofCall = &call;
    BaseConfig* const ofBackoff = &backoff;
    EXPECT_EQ(ofCall->GetJsonVersion(), 1);
    EXPECT_EQ(ofBackoff->GetJsonVersion(), 0);
    ofCall->FromJson(Parsed(R"({"interval": 7})"));
    EXPECT_EQ(ofCall->ToJson()["interval"].asInt(), 7);
    ofBackoff->FromJson(Parsed(R"({"jitter": 7})"));
    EXPECT_EQ(backoff.jitter, 5) << "it has no JSON form";
    EXPECT_TRUE(ofBackoff->ToJson().isNull());
}

TEST(AutomationJson, AConfigurationMayBeDestroyedThroughItsBaseClass)
{
    struct Watched : CallConfig
    {
        explicit Watched(bool& flag) : ended(flag) {}
        ~Watched() override { ended = true; }
        bool& ended;
    };
    bool ended = false;
    std::unique_ptr<BaseConfig> config = std::make_unique<Watched>(ended);
    config.reset();
    EXPECT_TRUE(ended);
}

TEST(AutomationJson, ACopyHasItsOwnValues)
{
    CallConfig source = Filled();
    CallConfig copy(source);
    CallConfig assigned;
    assigned = source;
    source.url = "changed";
    source.interval = 99;
    EXPECT_EQ(Shown(copy), "1 2 3 4 <before>");
    EXPECT_EQ(Shown(assigned), "1 2 3 4 <before>");

    BackoffConfig backoff;
    backoff.maxRetries = 6;
    const BackoffConfig other(backoff);
    backoff = BackoffConfig();
    EXPECT_EQ(other.maxRetries, 6);
    EXPECT_EQ(backoff.maxRetries, 0);
}

} // namespace OrlindexTest
