// Paths as text, by the platform's rules; the file system is not asked.
#pragma once

#include <string>
#include <string_view>

// The last component: "b.jpg" of "/a/b.jpg", "a" of "/a/", "/" of "/", "" of "".
std::string lastPathComponent(std::string_view path);
