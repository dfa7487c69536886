// The executable of a framework bundle that the tests load: a shared object with one symbol.
extern "C" int KestrailTestFrameworkAnswer() { return 42; }
