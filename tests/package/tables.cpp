// A library with the plugin's two exports, and optionally one export or import too many.
#include <cstdlib>

#ifdef _WIN32
#define TABLES_EXPORT __declspec(dllexport)
#define TABLES_IMPORT __declspec(dllimport)
#else
#define TABLES_EXPORT __attribute__((visibility("default")))
#define TABLES_IMPORT
#endif

#ifdef IS_NEIGHBOUR

extern "C" TABLES_EXPORT int neighbour();

int neighbour() {
    return 1;
}

#else

extern "C" TABLES_IMPORT int neighbour();
extern "C" TABLES_EXPORT int qt_plugin_instance();
extern "C" TABLES_EXPORT int qt_plugin_query_metadata_v2();

int qt_plugin_instance() {
    return std::rand();
}

int qt_plugin_query_metadata_v2() {
#ifdef IMPORTS_ONE_MORE
    return neighbour();
#else
    return 0;
#endif
}

#ifdef EXPORTS_ONE_MORE
extern "C" TABLES_EXPORT int oneMore();

int oneMore() {
    return 1;
}
#endif

#endif
