// Marks the declarations that a host's shared library exports to plug-ins. Everything is built with hidden
// visibility, so unmarked declarations cannot be used from another module.
#pragma once

#define NKELVOR20_API __attribute__((visibility("default")))
