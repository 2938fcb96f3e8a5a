// The registry of event callbacks: what a callback may do to it while an event is delivered. The sanitizers detect a
// use after free.

#include "api/EventCallbacks.h"

#include <algorithm>
#include <functional>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using Kestrany::IdentityServices::EventCallbacks;
using testing::ElementsAre;

/// The calls in order: the callback's name, the event code and the user value.
std::vector<std::string> calls;
/// What a callback does when it is called.
std::map<char, std::function<void()>> actions;

template <char Name>
void TALIX_CALL Callback(std::int32_t code, std::int32_t status, void* value)
{
    calls.push_back(Name + std::to_string(code) + (status == IdSuccess ? "" : " failed") +
                    (value == nullptr ? "" : " " + *static_cast<std::string*>(value)));
    if (const auto action = actions.find(Name); action != actions.end())
        std::function<void()>(action->second)(); // A copy: it may replace itself.
}

const talix_event_callback a = &Callback<'a'>;
const talix_event_callback b = &Callback<'b'>;
const talix_event_callback c = &Callback<'c'>;

class EventRegistry : public testing::Test
{
protected:
    EventRegistry()
    {
        calls.clear();
        actions.clear();
    }

    void Add(std::initializer_list<talix_event_callback> callbacks)
    {
        for (const talix_event_callback callback : callbacks)
            registry.Add(callback, nullptr);
    }

    void SignIn() { registry.Deliver(TALIX_EVENT_LOGGED_IN, IdSuccess); }
    void SignOut() { registry.Deliver(TALIX_EVENT_LOGGED_OUT, IdSuccess); }

    EventCallbacks registry;
};

TEST_F(EventRegistry, CallbacksAreCalledInTheOrderInWhichTheyWereAdded)
{
    Add({b, a, c});
    SignIn();
    EXPECT_THAT(calls, ElementsAre("b0", "a0", "c0"));
}

TEST_F(EventRegistry, ACallbackThatRemovesItselfIsNotCalledForTheNextEvent)
{
    Add({a, b, c});
    actions['b'] = [this] { registry.Remove(b); };
    SignIn();
    SignOut();
    EXPECT_THAT(calls, ElementsAre("a0", "b0", "c0", "a1", "c1"));
}

TEST_F(EventRegistry, ACallbackThatIsRemovedBeforeItsTurnIsNotCalledAnyMore)
{
    Add({a, b, c});
    actions['a'] = [this] {
        registry.Remove(b);
        registry.Remove(c);
    };
    SignIn();
    SignOut();
    EXPECT_THAT(calls, ElementsAre("a0", "a1"));
}

TEST_F(EventRegistry, ACallbackThatIsAddedIsCalledFromTheNextEventOn)
{
    Add({a});
    actions['a'] = [this] { Add({b, c}); };
    SignIn();
    SignOut();
    EXPECT_THAT(calls, ElementsAre("a0", "a1", "b1", "c1"));
}

TEST_F(EventRegistry, ACallbackThatIsRemovedAndAddedAgainIsCalledFromTheNextEventOn)
{
    std::string value = "new";
    Add({a, b});
    actions['a'] = [&] {
        registry.Remove(b);
        registry.Add(b, &value);
    };
    SignIn();
    actions.clear();
    SignOut();
    EXPECT_THAT(calls, ElementsAre("a0", "a1", "b1 new"));
}

TEST_F(EventRegistry, AnotherUserValueHoldsAtOnce)
{
    // The host may have freed the target of the earlier value.
    std::string before = "before";
    std::string after = "after";
    registry.Add(a, nullptr);
    registry.Add(b, &before);
    actions['a'] = [&] { registry.Add(b, &after); };
    SignIn();
    EXPECT_THAT(calls, ElementsAre("a0", "b0 after"));
}

TEST_F(EventRegistry, AnEmptiedRegistryEndsTheDelivery)
{
    Add({a, b, c});
    actions['a'] = [this] { registry.Clear(); };
    SignIn();
    EXPECT_TRUE(registry.IsEmpty());
    SignOut();
    EXPECT_THAT(calls, ElementsAre("a0"));
}

TEST_F(EventRegistry, WhatIsAddedToAnEmptiedRegistryIsCalledFromTheNextEventOn)
{
    Add({a, b});
    actions['a'] = [this] {
        actions.clear();
        registry.Clear();
        Add({b, c, a});
    };
    SignIn();
    EXPECT_THAT(calls, ElementsAre("a0"));
    SignOut();
    EXPECT_THAT(calls, ElementsAre("a0", "b1", "c1", "a1"));
}

TEST_F(EventRegistry, ADeliveryInsideAnotherCallsWhatWasAddedAndTheOuterOneDoesNot)
{
    Add({a, b});
    actions['a'] = [this] {
        actions.clear();
        Add({c});
        SignOut();
    };
    SignIn();
    EXPECT_THAT(calls, ElementsAre("a0", "a1", "b1", "c1", "b0"));
}

TEST_F(EventRegistry, WhatADeliveryInsideAnotherRemovesTheOuterOneDoesNotCall)
{
    Add({a, b, c});
    actions['a'] = [this] {
        actions['a'] = [this] {
            registry.Remove(a);
            registry.Remove(b);
        };
        SignOut();
        EXPECT_THAT(calls, ElementsAre("a0", "a1", "c1"));
    };
    SignIn();
    EXPECT_THAT(calls, ElementsAre("a0", "a1", "c1", "c0"));
    calls.clear();
    SignIn();
    EXPECT_THAT(calls, ElementsAre("c0"));
}

TEST_F(EventRegistry, ManyChangesDuringADeliveryAreSurvived)
{
    // The hash table grows meanwhile.
    Add({a, b});
    int round = 0;
    actions['a'] = [&] {
        for (int i = 0; i < 500; ++i)
        {
            // Not called: they are removed before the next event.
            const auto other = reinterpret_cast<talix_event_callback>(static_cast<std::uintptr_t>(0x1000 + i));
            registry.Add(other, nullptr);
            if (i % 7 == 0)
                registry.Remove(b);
            if (i % 7 == 3)
                registry.Add(b, nullptr);
        }
        for (int i = 0; i < 500; ++i)
            registry.Remove(reinterpret_cast<talix_event_callback>(static_cast<std::uintptr_t>(0x1000 + i)));
        if (++round < 10)
            SignOut();
    };
    SignIn();
    EXPECT_EQ(round, 10);
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "a0"), 1);
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "a1"), 9);
}

TEST_F(EventRegistry, ACallbackThatThrowsLeavesTheRegistryInOrder)
{
    Add({a, b});
    actions['a'] = [this] {
        registry.Remove(a);
        throw std::runtime_error("a host's mistake");
    };
    EXPECT_THROW(SignIn(), std::runtime_error);
    Add({a});
    actions.clear();
    SignOut();
    EXPECT_THAT(calls, ElementsAre("a0", "b1", "a1"));
}

} // namespace
