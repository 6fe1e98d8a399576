// Only for the address sanitizer. It names the library that lost some memory when the program ends,
// so those of drivers and plugins have to stay until then.
extern "C" int dlclose(void *) { return 0; }
