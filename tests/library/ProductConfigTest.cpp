// Layout, store rule, read rule and copying of ProductConfig.

#include <cstring>
#include <new>
#include <string>
#include <type_traits>
#include <vector>

#include "InvalidParameter.h"
#include "load/contract/ProductConfigLayout.h"
#include "orlindex/ProductConfig.h"
#include "support/Child.h"
#include "support/HostTest.h"
#include "support/Platform.h"
#include "support/PlatformImports.h"

namespace OrlindexTest {

using namespace Kestrany::IdentityServices;
using testing::Contains;
using testing::ElementsAre;
using testing::Not;

namespace {

struct Entry
{
    const char* name;
    void (*set)(ProductConfig&, const char*);
    int (*get)(const ProductConfig&, char*, int);
};

/// The five entries in the order of the private block.
const Entry entries[] = {
    {"OAuth2 client ID", [](ProductConfig& c, const char* t) { c.SetOAuth2ClientID(t); },
     [](const ProductConfig& c, char* b, int s) { return c.GetOAuth2ClientID(b, s); }},
    {"OAuth2 token scope", [](ProductConfig& c, const char* t) { c.SetOAuth2TokenScope(t); },
     [](const ProductConfig& c, char* b, int s) { return c.GetOAuth2AccessTokenScope(b, s); }},
    {"product line name", [](ProductConfig& c, const char* t) { c.SetProductLineName(t); },
     [](const ProductConfig& c, char* b, int s) { return c.GetProductLineName(b, s); }},
    {"product release ID", [](ProductConfig& c, const char* t) { c.SetProductReleaseId(t); },
     [](const ProductConfig& c, char* b, int s) { return c.GetProductReleaseId(b, s); }},
    {"product build ID", [](ProductConfig& c, const char* t) { c.SetProductBuildId(t); },
     [](const ProductConfig& c, char* b, int s) { return c.GetProductBuildId(b, s); }},
};

std::string Text(const ProductConfig& config, const Entry& entry)
{
    char buffer[64] = "unset";
    entry.get(config, buffer, sizeof buffer);
    return buffer;
}

std::vector<std::string> Texts(const ProductConfig& config)
{
    std::vector<std::string> texts;
    for (const Entry& entry : entries)
        texts.push_back(Text(config, entry));
    return texts;
}

void Fill(ProductConfig& config)
{
    int number = 0;
    for (const Entry& entry : entries)
        entry.set(config, ("text " + std::to_string(++number)).c_str());
}

/// The memory of the private block, which plugins and hosts of other builds share.
struct BlockEntry
{
    const char* text;
    std::int32_t length;
};
static_assert(sizeof(BlockEntry) == 16);

const BlockEntry* Block(const ProductConfig& config)
{
    return reinterpret_cast<const BlockEntry* const*>(&config)[1];
}

} // namespace

static_assert(sizeof(ProductConfig) == 2 * sizeof(void*), "a virtual table and a private block, nothing else");
static_assert(std::is_polymorphic_v<ProductConfig> && std::has_virtual_destructor_v<ProductConfig>);

TEST(ProductConfigLayout, TheBlockHoldsFiveTextsWithTheirLengthsInOrder)
{
    ProductConfig config;
    for (int i = 0; i < 5; ++i)
    {
        EXPECT_EQ(Block(config)[i].text, nullptr) << entries[i].name;
        EXPECT_EQ(Block(config)[i].length, 0) << entries[i].name;
    }
    Fill(config);
    for (int i = 0; i < 5; ++i)
    {
        EXPECT_EQ(Block(config)[i].text, "text " + std::to_string(i + 1)) << entries[i].name;
        EXPECT_EQ(Block(config)[i].length, 6) << entries[i].name;
    }
}

TEST(ProductConfigLayout, APluginReadsAndSetsEachTextByTheContractsHeader)
{
    ProductConfig config;
    Fill(config);
    const ProductConfigTexts& texts = TextsOf(config);
    const ProductText* const read[] = {&texts.clientId, &texts.tokenScope, &texts.productLineName,
                                       &texts.productReleaseId, &texts.productBuildId};
    const ProductTextSetterNames names[] = {SetOAuth2ClientIDNames, SetOAuth2TokenScopeNames, SetProductLineNameNames,
                                            SetProductReleaseIdNames, SetProductBuildIdNames};
    for (int i = 0; i < 5; ++i)
    {
        SCOPED_TRACE(entries[i].name);
        EXPECT_EQ(read[i]->text, "text " + std::to_string(i + 1));
        EXPECT_EQ(read[i]->length, 6);
        const ProductTextSetter set =
            FindProductTextSetter(names[i], [](const char* name) { return GetProcAddress(LibraryModule(), name); });
        ASSERT_TRUE(set);
        set(config, "of a plugin");
        EXPECT_STREQ(read[i]->text, "of a plugin");
        EXPECT_EQ(read[i]->length, 11);
    }
    EXPECT_FALSE(FindProductTextSetter({"no name", "nor this"},
                                       [](const char* name) { return GetProcAddress(LibraryModule(), name); }));
}

TEST(ProductConfigLayout, TheDestructorReleasesTheBlockAndClearsThePointerButKeepsTheTexts)
{
    alignas(ProductConfig) unsigned char storage[sizeof(ProductConfig)];
    auto* const config = new (storage) ProductConfig;
    Fill(*config);
    const BlockEntry* const block = Block(*config);
    const char* texts[5];
    for (int i = 0; i < 5; ++i)
        texts[i] = block[i].text;

    std::vector<const void*> released;
    const FreeDouble record([&released](void* memory) {
        released.push_back(memory);
        FreeDouble::Original(memory);
    });
    config->~ProductConfig();

    EXPECT_THAT(released, ElementsAre(block));
    EXPECT_EQ(Block(*std::launder(config)), nullptr);
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(texts[i], "text " + std::to_string(i + 1));
}

TEST(ProductConfigReading, ADefaultConstructedObjectReturnsZeroAndLeavesTheBufferUntouched)
{
    const ProductConfig config;
    for (const Entry& entry : entries)
    {
        char buffer[8] = "before";
        EXPECT_EQ(entry.get(config, buffer, sizeof buffer), 0) << entry.name;
        EXPECT_STREQ(buffer, "before") << entry.name;
    }
}

TEST(ProductConfigReading, ATextOfThreeFitsABufferOfFour)
{
    for (const Entry& entry : entries)
    {
        ProductConfig config;
        entry.set(config, "abc");
        char buffer[8] = "1234567";
        EXPECT_EQ(entry.get(config, buffer, 4), 3) << entry.name;
        EXPECT_STREQ(buffer, "abc") << entry.name;
        EXPECT_EQ(buffer[4], '5') << entry.name;
    }
}

TEST(ProductConfigReading, ANullBufferOrASizeOfZeroReturnsZero)
{
    for (const Entry& entry : entries)
    {
        ProductConfig config;
        entry.set(config, "abc");
        char buffer[8] = "before";
        EXPECT_EQ(entry.get(config, nullptr, 8), 0) << entry.name;
        EXPECT_EQ(entry.get(config, buffer, 0), 0) << entry.name;
        EXPECT_STREQ(buffer, "before") << entry.name;
    }
}

TEST(ProductConfigReading, AnEmptyTextIsSet)
{
    ProductConfig config;
    config.SetProductLineName("");
    EXPECT_NE(Block(config)[2].text, nullptr);
    char buffer[8] = "before";
    EXPECT_EQ(config.GetProductLineName(buffer, sizeof buffer), 0);
    EXPECT_STREQ(buffer, "");
}

TEST(ProductConfigReading, AnOverflowReachesTheHostsHandlerAndTheLengthIsStillReturned)
{
    ProductConfig config;
    Fill(config);
    for (const Entry& entry : entries)
    {
        const FaultCounter counter;
        char buffer[8] = "before";
        EXPECT_EQ(entry.get(config, buffer, 6), 6) << entry.name;
        EXPECT_EQ(counter.Faults(), 1) << entry.name;
        EXPECT_EQ(buffer[0], '\0') << entry.name;
        EXPECT_EQ(buffer[6], '\0') << entry.name;
    }
}

TEST(ProductConfigReading, AnOverflowWithoutAHandlerEndsTheProcess)
{
    ExpectProcessEnds(ExitCodeOfInvalidParameter(), [] {
        ProductConfig config;
        config.SetProductLineName("too long");
        SetInvalidParameterHandler(nullptr);
        char buffer[4];
        config.GetProductLineName(buffer, sizeof buffer);
    });
}

TEST(ProductConfigStoring, ANullClientIdIsRefusedAndThePreviousOneStays)
{
    ProductConfig config;
    EXPECT_EQ(config.SetOAuth2ClientID(nullptr), IdInvalidClientId);
    EXPECT_EQ(config.SetOAuth2ClientID("first"), IdSuccess);
    EXPECT_EQ(config.SetOAuth2ClientID(nullptr), IdInvalidClientId);
    EXPECT_EQ(Text(config, entries[0]), "first");
}

TEST(ProductConfigStoring, ANullTextLeavesTheEntryUnchanged)
{
    for (const Entry& entry : entries)
    {
        ProductConfig config;
        entry.set(config, nullptr);
        EXPECT_EQ(Text(config, entry), "unset") << entry.name;
        entry.set(config, "first");
        entry.set(config, nullptr);
        EXPECT_EQ(Text(config, entry), "first") << entry.name;
    }
}

TEST(ProductConfigStoring, EveryEntryIsItsOwn)
{
    ProductConfig config;
    Fill(config);
    EXPECT_THAT(Texts(config), ElementsAre("text 1", "text 2", "text 3", "text 4", "text 5"));
}

TEST(ProductConfigStoring, TextsAreCopiedAsBytes)
{
    ProductConfig config;
    char text[] = "\xFF\xFE \xC3\xBC";
    config.SetProductReleaseId(text);
    text[0] = 'x';
    EXPECT_EQ(Text(config, entries[3]), "\xFF\xFE \xC3\xBC");
}

TEST(ProductConfigStoring, ATextLongerThanTheStoredOneGetsANewBufferEvenWhereTheOldOneWouldHoldIt)
{
    for (const Entry& entry : entries)
    {
        ProductConfig config;
        std::vector<std::size_t> allocated;
        std::vector<const void*> released;
        const MallocDouble allocations([&allocated](std::size_t size) {
            allocated.push_back(size);
            return MallocDouble::Original(size);
        });
        const FreeDouble releases([&released](void* memory) {
            released.push_back(memory);
            FreeDouble::Original(memory);
        });
        const BlockEntry& stored = Block(config)[&entry - entries];

        entry.set(config, "1234");
        EXPECT_THAT(allocated, ElementsAre(5U)) << entry.name;
        EXPECT_EQ(Text(config, entry), "1234");
        const char* const first = stored.text;

        entry.set(config, "12");
        EXPECT_EQ(stored.text, first) << entry.name;
        EXPECT_THAT(allocated, ElementsAre(5U)) << entry.name;
        EXPECT_EQ(Text(config, entry), "12");

        entry.set(config, "123");
        EXPECT_THAT(allocated, ElementsAre(5U, 4U)) << entry.name;
        EXPECT_THAT(released, ElementsAre(first)) << entry.name;
        EXPECT_EQ(Text(config, entry), "123");

        entry.set(config, "abc");
        EXPECT_EQ(allocated.size(), 2U) << "a text of equal length reuses the buffer";
        EXPECT_EQ(Text(config, entry), "abc");
    }
}

TEST(ProductConfigStoring, WithoutMemoryForALongerTextTheOldOneStays)
{
    // The small blocks that an exception needs can still be allocated.
    const std::string longer(4000, 'x');
    for (const Entry& entry : entries)
    {
        ProductConfig config;
        entry.set(config, "old");
        const BlockEntry& stored = Block(config)[&entry - entries];
        const char* const before = stored.text;
        std::vector<const void*> released;
        {
            const MallocDouble littleMemory(
                [&longer](std::size_t size) { return size > longer.size() ? nullptr : MallocDouble::Original(size); });
            const FreeDouble releases([&released](void* memory) {
                released.push_back(memory);
                FreeDouble::Original(memory);
            });
            EXPECT_THROW(entry.set(config, longer.c_str()), std::bad_alloc) << entry.name;
        }
        EXPECT_THAT(released, Not(Contains(before))) << entry.name;
        EXPECT_EQ(stored.text, before) << entry.name;
        EXPECT_EQ(stored.length, 3) << entry.name;
        EXPECT_EQ(Text(config, entry), "old");
    }
}

TEST(ProductConfigCopying, ACopyHasItsOwnTexts)
{
    ProductConfig source;
    Fill(source);
    const ProductConfig copy(source);
    source.SetProductLineName("changed");
    EXPECT_THAT(Texts(copy), ElementsAre("text 1", "text 2", "text 3", "text 4", "text 5"));
    for (int i = 0; i < 5; ++i)
        EXPECT_NE(Block(copy)[i].text, Block(source)[i].text);
}

TEST(ProductConfigCopying, AnEntryThatWasNeverSetStaysUnsetInTheCopy)
{
    ProductConfig source;
    source.SetProductReleaseId("only");
    const ProductConfig copy(source);
    EXPECT_THAT(Texts(copy), ElementsAre("unset", "unset", "unset", "only", "unset"));
}

TEST(ProductConfigCopying, AssignmentReplacesTheTexts)
{
    ProductConfig source;
    Fill(source);
    ProductConfig target;
    target.SetProductLineName("a rather long product line name");
    EXPECT_EQ(&(target = source), &target);
    EXPECT_THAT(Texts(target), ElementsAre("text 1", "text 2", "text 3", "text 4", "text 5"));
}

TEST(ProductConfigCopying, AssigningADefaultConstructedObjectLeavesTheTextsUnchanged)
{
    ProductConfig target;
    Fill(target);
    const ProductConfig empty;
    target = empty;
    EXPECT_THAT(Texts(target), ElementsAre("text 1", "text 2", "text 3", "text 4", "text 5"));
}

TEST(ProductConfigCopying, SelfAssignmentLeavesTheObjectUnchanged)
{
    ProductConfig config;
    Fill(config);
    const BlockEntry before = Block(config)[0];
    const ProductConfig& same = config;
    EXPECT_EQ(&(config = same), &config);
    EXPECT_THAT(Texts(config), ElementsAre("text 1", "text 2", "text 3", "text 4", "text 5"));
    EXPECT_EQ(Block(config)[0].text, before.text);
}

} // namespace OrlindexTest
