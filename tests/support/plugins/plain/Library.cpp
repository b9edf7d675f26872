extern "C" __attribute__((visibility("default"))) int plainLibrary()
{
    return 1;
}
