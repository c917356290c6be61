// The version of the library that these headers belong to.
#ifndef ZORVEK_VERSION_H
#define ZORVEK_VERSION_H

namespace zorvek {

constexpr char kVersion[] = "2.0.0";

}  // namespace zorvek

#endif
