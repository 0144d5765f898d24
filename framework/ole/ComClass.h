// Classes that implement COM interfaces derive from structs without virtual
// destructors. That is safe: a COM object is destroyed by its own Release,
// never through an interface pointer, so the warning about such bases is
// switched off around their definitions, and only there.
#pragma once

#define LUMBREL_COM_CLASS_BEGIN \
    _Pragma("GCC diagnostic push") _Pragma("GCC diagnostic ignored \"-Wnon-virtual-dtor\"")
#define LUMBREL_COM_CLASS_END _Pragma("GCC diagnostic pop")
