#include "platform/FontLibrary.h"

#include <fontconfig/fontconfig.h>

void FontLibrary::load() { FcInit(); }
