// talix_init refuses to run under the local system account.

#include "FlatTest.h"
#include "support/PlatformImports.h"

namespace OrlindexTest {

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

} // namespace

/// Replaces the platform's results about the caller's account.
class FlatLocalSystem : public HostTest
{
protected:
    FlatLocalSystem()
        : allocate_([this](PSID_IDENTIFIER_AUTHORITY authority, BYTE count, DWORD first, DWORD second, DWORD third,
                           DWORD fourth, DWORD fifth, DWORD sixth, DWORD seventh, DWORD eighth, PSID* sid) {
              steps.push_back("allocate");
              EXPECT_THAT(authority->Value, ElementsAre(0, 0, 0, 0, 0, 5));
              EXPECT_EQ(count, 1);
              EXPECT_EQ(first, 18U);
              if (!canAllocate)
                  return FALSE;
              const BOOL done = AllocateAndInitializeSidDouble::Original(authority, count, first, second, third, fourth,
                                                                         fifth, sixth, seventh, eighth, sid);
              allocated = *sid;
              return done;
          }),
          membership_([this](HANDLE token, PSID sid, PBOOL member) {
              steps.push_back("ask");
              EXPECT_EQ(token, nullptr) << "the caller's own token";
              EXPECT_EQ(sid, allocated);
              *member = isMember;
              return canAsk;
          }),
          free_([this](PSID sid) {
              steps.push_back("free");
              EXPECT_EQ(sid, allocated);
              return FreeSidDouble::Original(sid);
          })
    {
    }

    BOOL canAllocate = TRUE;
    BOOL canAsk = TRUE;
    BOOL isMember = FALSE;
    PSID allocated = nullptr;
    std::vector<std::string> steps;

private:
    AllocateAndInitializeSidDouble allocate_;
    CheckTokenMembershipDouble membership_;
    FreeSidDouble free_;
};

TEST_F(FlatLocalSystem, InitUnderTheLocalSystemAccountIsRefusedAndNothingIsStarted)
{
    installation.Install();
    isMember = TRUE;
    EXPECT_EQ(talix_init(), IdRunningAsLocalSystem);
    EXPECT_EQ(talix_get_boolean(1), 0);
    EXPECT_FALSE(IsLoaded(installation.PluginFile()));
    EXPECT_THAT(steps, ElementsAre("allocate", "ask", "free"));
}

TEST_F(FlatLocalSystem, ARefusedInitDoesNotCount)
{
    InstallPlugin();
    ASSERT_EQ(talix_init(), IdSuccess);
    isMember = TRUE;
    EXPECT_EQ(talix_init(), IdRunningAsLocalSystem);
    EXPECT_EQ(talix_get_boolean(1), 1);
    EXPECT_EQ(talix_deinit(), IdSuccess);
    EXPECT_EQ(talix_get_boolean(1), 0);
}

TEST_F(FlatLocalSystem, ARefusedInitLeavesTheProductConfiguration)
{
    InstallPlugin();
    ASSERT_EQ(talix_init(), IdSuccess);
    const talix_product_config config = talix_create_product_config("client", "scope");
    isMember = TRUE;
    ASSERT_EQ(talix_init(), IdRunningAsLocalSystem);
    talix_set_product_line_name(config, "line");
    char text[8] = "";
    EXPECT_EQ(IdServicesMgr::GetInstance()->GetProductConfigObj()->GetProductLineName(text, sizeof text), 4);
}

TEST_F(FlatLocalSystem, AnyOtherAccountStarts)
{
    installation.Install();
    EXPECT_EQ(talix_init(), IdSuccess);
    EXPECT_THAT(steps, ElementsAre("allocate", "ask", "free"));
}

TEST_F(FlatLocalSystem, AQuestionThatFailsCountsAsNo)
{
    installation.Install();
    canAsk = FALSE;
    isMember = TRUE;
    EXPECT_EQ(talix_init(), IdSuccess);
    EXPECT_THAT(steps, ElementsAre("allocate", "ask", "free"));
}

TEST_F(FlatLocalSystem, WithoutAnIdentifierTheCheckIsSkipped)
{
    installation.Install();
    canAllocate = FALSE;
    isMember = TRUE;
    EXPECT_EQ(talix_init(), IdSuccess);
    EXPECT_THAT(steps, ElementsAre("allocate"));
}

TEST_F(FlatLocalSystem, TheClassInterfaceDoesNotAsk)
{
    installation.Install();
    isMember = TRUE;
    EXPECT_EQ(IdServicesMgr::Initialize(), IdSuccess);
    EXPECT_THAT(steps, IsEmpty());
}

} // namespace OrlindexTest
