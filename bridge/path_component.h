// Paths as text, by the platform's rules; the file system is not asked.
#pragma once

#include <string>
#include <string_view>

// The last component: "b.jpg" of "/a/b.jpg", "a" of "/a/", "/" of "/", "" of "".
std::string lastPathComponent(std::string_view path);

// The path without it: "/a" of "/a/b.jpg" and of "/a/b/", "/" of "/a" and of "/", "" of "a" and
// of "".
std::string pathWithoutLastComponent(std::string_view path);
