// Marks a worker or a table: unmangled and visible in the shared library, but no part of the interface.
#pragma once

#define TEV_WORKER extern "C" __attribute__((visibility("default")))
