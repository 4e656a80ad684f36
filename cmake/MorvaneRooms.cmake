# One static library per room, so that the linker enforces which room may use which.

find_program(CCACHE ccache)
if(CCACHE AND MORVANE_PCH)
    # What ccache needs to know of precompiled headers to work with them.
    set(CMAKE_CXX_COMPILER_LAUNCHER
        "${CMAKE_COMMAND}" -E env CCACHE_SLOPPINESS=pch_defines,time_macros "${CCACHE}")
    add_compile_options(-fpch-preprocess)
elseif(CCACHE)
    set(CMAKE_CXX_COMPILER_LAUNCHER "${CCACHE}")
endif()
find_program(MOLD mold)

add_library(morvane_warnings INTERFACE)
target_compile_options(morvane_warnings INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-qual -Werror)

add_compile_definitions(QT_NO_KEYWORDS QT_NO_CAST_TO_ASCII QT_STRICT_ITERATORS)
if(MOLD)
    add_link_options(-fuse-ld=mold)
endif()
if(MORVANE_SANITIZE)
    add_compile_options(-fsanitize=${MORVANE_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    add_link_options(-fsanitize=${MORVANE_SANITIZE})
endif()

if(MORVANE_PCH)
    find_package(GTest REQUIRED)
    add_compile_definitions(GTEST_HAS_PTHREAD=1)  # as GTest's targets define it: all must agree
    add_library(morvane_pch OBJECT "${CMAKE_SOURCE_DIR}/cmake/pch.cpp")
    target_link_libraries(morvane_pch PRIVATE Qt6::Core nlohmann_json::nlohmann_json GTest::gmock morvane_warnings)
    target_precompile_headers(morvane_pch PRIVATE
        <algorithm> <atomic> <filesystem> <functional> <memory> <optional> <string> <thread> <vector>
        <QCoreApplication> <QObject> <gmock/gmock.h> <gtest/gtest.h> <nlohmann/json.hpp>)
endif()

# morvane_precompiled(TARGET): with MORVANE_PCH, TARGET begins with the headers precompiled once.
function(morvane_precompiled target)
    if(MORVANE_PCH)
        target_precompile_headers(${target} REUSE_FROM morvane_pch)
    endif()
endfunction()

# morvane_check_headers(TARGET header...)
# Lets the target all_verify_interface_header_sets compile every header alone, as TARGET's users would.
function(morvane_check_headers target)
    list(FILTER ARGN INCLUDE REGEX "\\.h$")
    if(ARGN)
        target_sources(${target} INTERFACE FILE_SET headers TYPE HEADERS
                       BASE_DIRS "${CMAKE_SOURCE_DIR}" FILES ${ARGN})
        set_target_properties(${target} PROPERTIES VERIFY_INTERFACE_HEADER_SETS ON)
    endif()
endfunction()

# morvane_room(NAME [DIRECTORY dir] [EXCLUDE stem...] [ONLY stem...] LINKS target...)
# Makes the static library morvane_NAME of every source in the room's folder (not its subfolders).
function(morvane_room name)
    cmake_parse_arguments(ROOM "" "DIRECTORY" "EXCLUDE;ONLY;LINKS" ${ARGN})
    if(NOT ROOM_DIRECTORY)
        set(ROOM_DIRECTORY ${name})
    endif()
    file(GLOB sources CONFIGURE_DEPENDS "${CMAKE_SOURCE_DIR}/${ROOM_DIRECTORY}/*.cpp"
                                        "${CMAKE_SOURCE_DIR}/${ROOM_DIRECTORY}/*.h")
    foreach(stem IN LISTS ROOM_EXCLUDE)
        list(FILTER sources EXCLUDE REGEX "/${stem}\\.(cpp|h)$")
    endforeach()
    if(ROOM_ONLY)
        list(JOIN ROOM_ONLY "|" only)
        list(FILTER sources INCLUDE REGEX "/(${only})\\.(cpp|h)$")
    endif()
    if(NOT sources MATCHES "\\.cpp")
        add_library(morvane_${name} INTERFACE)
        target_include_directories(morvane_${name} INTERFACE "${CMAKE_SOURCE_DIR}")
        target_link_libraries(morvane_${name} INTERFACE ${ROOM_LINKS})
        morvane_check_headers(morvane_${name} ${sources})
        return()
    endif()
    add_library(morvane_${name} STATIC ${sources})
    set_target_properties(morvane_${name} PROPERTIES AUTOMOC ON)
    target_include_directories(morvane_${name} PUBLIC "${CMAKE_SOURCE_DIR}")
    target_link_libraries(morvane_${name} PUBLIC ${ROOM_LINKS} PRIVATE morvane_warnings)
    morvane_check_headers(morvane_${name} ${sources})
    morvane_precompiled(morvane_${name})
endfunction()
