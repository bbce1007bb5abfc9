/* loads_by_name LIBRARY: a host that asks the loader for the library by name, as one does that was built
 * without this library, and looks a function up in it. */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <stdio.h>
#include <string.h>

int main(int argc, char** argv) {
    void* library = argc == 2 ? dlopen(argv[1], RTLD_NOW) : NULL;
    void* address = library != NULL ? dlsym(library, "np_getAPIVersion") : NULL;
    void (*get_version)(int*, int*) = NULL;
    int version_major = -1;
    int version_minor = -1;
    if (address == NULL) {
        fprintf(stderr, "loads_by_name: %s\n", dlerror());
        return 1;
    }
    memcpy(&get_version, &address, sizeof address);
    get_version(&version_major, &version_minor);
    if (version_major != 1 || version_minor != 0) {
        fprintf(stderr, "loads_by_name: version %d.%d\n", version_major, version_minor);
        return 1;
    }
    return 0;
}
