/// A library that is no plug-in.
extern "C" int plainLibraryAnswer()
{
    return 42;
}
