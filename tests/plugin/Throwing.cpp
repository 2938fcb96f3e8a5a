// The build "throwing" of the test plugin: an operation throws an exception of the plugin's own compiler. Other tests
// throw in a hook, which is code of the test program.

#include <stdexcept>

#include "Recorder.h"

namespace OrlindexTest {
namespace {

void Throw(void* /*context*/, const std::uint64_t* /*arguments*/, int /*count*/)
{
    throw std::runtime_error("of the plugin");
}

const bool prepared = (Recorder::Instance().SetHook(Client::RefreshOAuth2Token, &Throw, nullptr), true);

} // namespace
} // namespace OrlindexTest
