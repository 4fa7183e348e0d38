// Preloaded into the programs of the asan tests: nothing is unloaded. The OpenGL driver is closed before the leak
// sanitizer looks, so that what the driver's globals point to would seem lost, in a module without a name.
extern "C" __attribute__((visibility("default"))) int dlclose(void*)
{
    return 0;
}
