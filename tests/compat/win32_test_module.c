/* A module for LoadLibrary and GetProcAddress to find. */
__attribute__((visibility("default"))) int scrim_test_module_triple(int x) { return 3 * x; }
