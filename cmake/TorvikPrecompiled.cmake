# Precompiled headers, for build time alone: two thirds of a source's time went into the standard library's, Qt's and
# GoogleTest's headers. They hold system headers only, so that a change of our own never rebuilds them, and each source
# still names what it uses (-DCMAKE_DISABLE_PRECOMPILE_HEADERS=ON builds without them). Every kind is compiled once and
# shared by all targets of that kind: libraries without Qt, libraries with Qt Core, and test programs.

set(TORVIK_PCH_STD <algorithm> <array> <charconv> <chrono> <cstdint> <deque> <exception> <functional> <map> <memory>
    <mutex> <optional> <set> <span> <stdexcept> <string> <string_view> <unordered_map> <utility> <variant> <vector>)
set(TORVIK_PCH_QT ${TORVIK_PCH_STD} <QDateTime> <QHash> <QObject> <QRegularExpression> <QString> <QStringList> <QTimer>
    <QUuid>)
set(TORVIK_PCH_TESTS ${TORVIK_PCH_QT} <QCoreApplication> <QDir> <QFile> <QTemporaryDir> <gmock/gmock.h> <gtest/gtest.h>)

# A compiler cache takes the header's identity from the file .gch.sum: the compiled header itself differs from one build
# folder to the next.
function(torvik_precompiled_host kind)
    cmake_parse_arguments(H "" "" "LINK;HEADERS" ${ARGN})
    set(host torvik_pch_${kind})
    set(source ${CMAKE_BINARY_DIR}/pch_${kind}.cpp)
    file(CONFIGURE OUTPUT ${source} CONTENT "int main() {\n    return 0;\n}\n")
    if(kind STREQUAL tests)
        add_executable(${host} ${source})
    else()
        add_library(${host} OBJECT ${source})
    endif()
    target_link_libraries(${host} PRIVATE ${H_LINK} torvik_warnings)
    if(NOT kind STREQUAL std)
        target_compile_definitions(${host} PRIVATE QT_NO_KEYWORDS QT_NO_CAST_FROM_BYTEARRAY)
    endif()
    target_precompile_headers(${host} PRIVATE ${H_HEADERS})
    file(CONFIGURE OUTPUT ${CMAKE_BINARY_DIR}/CMakeFiles/${host}.dir/cmake_pch.hxx.gch.sum
         CONTENT "${CMAKE_CXX_COMPILER_VERSION} ${Qt6_VERSION} ${GTest_VERSION} ${H_HEADERS}\n")
endfunction()

# torvik_precompiled(TARGET KIND): TARGET uses the precompiled header of KIND (std, qt or tests).
function(torvik_precompiled target kind)
    if(NOT CMAKE_DISABLE_PRECOMPILE_HEADERS AND TARGET torvik_pch_${kind})
        target_precompile_headers(${target} REUSE_FROM torvik_pch_${kind})
    endif()
endfunction()
