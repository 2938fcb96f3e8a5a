// The library that the "dependent" build of the test plugin imports.

extern "C" __declspec(dllexport) int TestPluginDependency()
{
    return 42;
}
