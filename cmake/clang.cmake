# Clang, whatever version the system has, by its name without one.
find_program(PHOTOS_KIT_CLANG clang REQUIRED)
find_program(PHOTOS_KIT_CLANGXX clang++ REQUIRED)
set(CMAKE_CXX_COMPILER ${PHOTOS_KIT_CLANGXX})
set(CMAKE_OBJC_COMPILER ${PHOTOS_KIT_CLANG})
set(CMAKE_OBJCXX_COMPILER ${PHOTOS_KIT_CLANGXX})
