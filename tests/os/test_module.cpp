// A module with one function.
extern "C" __attribute__((visibility("default"))) int OsTestAnswer() {
    return 42;
}
