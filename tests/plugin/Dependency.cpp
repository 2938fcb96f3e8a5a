// The library that the "dependent" build of the test plugin cannot be loaded without.

extern "C" __declspec(dllexport) int TestPluginDependency()
{
    return 42;
}
