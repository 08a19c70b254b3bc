// The browser's library is the system's and not instrumented: what it does with memory that it made itself isn't ours to judge.

// The sanitizer's own library looks for these.
#define SEEN_BY_THE_SANITIZER extern "C" __attribute__((visibility("default"))) const char*

/// It frees some objects by the type of a base.
SEEN_BY_THE_SANITIZER __asan_default_options() { return "new_delete_type_mismatch=0"; }

/// It, and the fonts that it opens, keep what was made once until the process ends.
SEEN_BY_THE_SANITIZER __lsan_default_suppressions() { return "leak:libQt6WebEngineCore.so\nleak:libfontconfig.so\n"; }
