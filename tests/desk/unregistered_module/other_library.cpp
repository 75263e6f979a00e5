// A library that is no module: it has no entry point of a host.
extern "C" int OtherFunction() {
    return 0;
}
