// Marks what a host shared library offers to plug-ins. Everything is built with hidden visibility, so a
// declaration without this mark cannot be reached from another module.
#pragma once

#define NKELVOR20_API __attribute__((visibility("default")))
