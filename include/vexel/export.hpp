// VEXEL_API marks what libvexel exports; everything else in it is hidden.
#pragma once

#define VEXEL_API __attribute__((visibility("default")))
