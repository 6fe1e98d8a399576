# Compiler settings of our own code, carried by one interface target.
set(CMAKE_AUTOMOC ON)
set(CMAKE_AUTORCC ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

find_program(CCACHE ccache)
if(CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    set(CMAKE_CXX_COMPILER_LAUNCHER "${CCACHE}")
endif()

add_library(quellmoor_settings INTERFACE)
target_compile_features(quellmoor_settings INTERFACE cxx_std_20)
target_compile_options(quellmoor_settings INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-qual -Werror)
target_compile_definitions(quellmoor_settings INTERFACE
    QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_URL_CAST_FROM_STRING
    $<$<CONFIG:Release>:_GLIBCXX_ASSERTIONS>)
target_include_directories(quellmoor_settings INTERFACE "${PROJECT_SOURCE_DIR}")

if(QUELLMOOR_SANITIZER STREQUAL "address")
    target_compile_options(quellmoor_settings INTERFACE -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(quellmoor_settings INTERFACE -fsanitize=address,undefined)
elseif(QUELLMOOR_SANITIZER STREQUAL "fuzzer")
    target_compile_options(quellmoor_settings INTERFACE -fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(quellmoor_settings INTERFACE -fsanitize=address,undefined)
elseif(QUELLMOOR_SANITIZER STREQUAL "thread")
    target_compile_options(quellmoor_settings INTERFACE -fsanitize=thread -fno-omit-frame-pointer)
    target_link_options(quellmoor_settings INTERFACE -fsanitize=thread)
endif()

# One static library a folder: quellmoor_library(<name> SOURCES ... LINK ...)
function(quellmoor_library name)
    cmake_parse_arguments(ARG "" "" "SOURCES;LINK" ${ARGN})
    add_library(quellmoor_${name} STATIC ${ARG_SOURCES})
    target_link_libraries(quellmoor_${name} PUBLIC quellmoor_settings ${ARG_LINK})
endfunction()
