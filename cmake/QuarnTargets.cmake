# What every target of the project is built with, and the one way to declare a library.

# Apart from the other warnings, so that a folder can take it back.
add_compile_options(-Wconversion)

# With 32 bits there are files beyond 2 GiB and times after 2038, too.
if(CMAKE_SIZEOF_VOID_P EQUAL 4)
  add_compile_definitions(_FILE_OFFSET_BITS=64 _TIME_BITS=64)
endif()

# Libraries become part of modules, and programs share precompiled headers with them: so all are
# compiled as a module is, whether or not the toolkit asks for it.
add_compile_options(-fPIC)

add_library(quarn_build_flags INTERFACE)
target_include_directories(quarn_build_flags INTERFACE "${PROJECT_SOURCE_DIR}")
target_compile_definitions(
  quarn_build_flags INTERFACE QT_NO_FOREACH QT_DEPRECATED_WARNINGS
                              QT_NO_CAST_TO_ASCII)
target_compile_options(quarn_build_flags INTERFACE -Wall -Wextra -Wpedantic -Wshadow)
if(QUARN_WERROR)
  target_compile_options(quarn_build_flags INTERFACE -Werror)
endif()
# What a target's own sources are checked for; a folder can set another value for its targets.
define_property(TARGET PROPERTY QUARN_SANITIZERS INITIALIZE_FROM_VARIABLE QUARN_SANITIZERS)
set(QUARN_SANITIZERS address,undefined)
if(QUARN_SANITIZE)
  target_compile_options(
    quarn_build_flags
    INTERFACE -fsanitize=$<TARGET_PROPERTY:QUARN_SANITIZERS> -fno-sanitize-recover=undefined
              -fno-omit-frame-pointer)
  target_link_options(quarn_build_flags INTERFACE -fsanitize=address,undefined)
endif()

include(CheckLinkerFlag)
check_linker_flag(CXX -fuse-ld=mold QUARN_LINKS_WITH_MOLD)
if(QUARN_LINKS_WITH_MOLD)
  add_link_options(-fuse-ld=mold)
endif()

# quarn_precompiled_headers(name HEADERS ... LINK ...): compiles headers of the toolkit once.
# quarn_use_precompiled(target name): uses them. A source still names all that it includes: clang-tidy
# reads it without these. They are the headers that many sources include: each other one would cost
# every source some time to load. Who uses them is compiled with the same options and links the same
# modules of the toolkit, or more.
function(quarn_precompiled_headers name)
  cmake_parse_arguments(ARG "" "" "HEADERS;LINK" ${ARGN})
  set(source "${CMAKE_CURRENT_BINARY_DIR}/${name}.cpp")
  file(CONFIGURE OUTPUT "${source}" CONTENT "")
  add_library(${name} OBJECT "${source}")
  set_target_properties(${name} PROPERTIES AUTOMOC OFF)
  target_link_libraries(${name} PRIVATE ${ARG_LINK} quarn_build_flags)
  target_precompile_headers(${name} PRIVATE ${ARG_HEADERS})
endfunction()

function(quarn_use_precompiled target name)
  target_precompile_headers(${target} REUSE_FROM ${name})
endfunction()

set(core_headers
    <QByteArray>
    <QDebug>
    <QDir>
    <QFile>
    <QFileInfo>
    <QHash>
    <QList>
    <QPointer>
    <QStringList>
    <QTimer>
    <algorithm>
    <array>
    <cmath>
    <functional>
    <memory>
    <optional>
    <utility>
    <vector>)
set(widget_headers <QApplication> <QMouseEvent> <QPainter> <QPixmap> <QVBoxLayout> <QWidget>)

quarn_precompiled_headers(precompiled_core HEADERS ${core_headers} LINK Qt6::Core)
quarn_precompiled_headers(
  precompiled_widgets HEADERS ${core_headers} ${widget_headers} LINK Qt6::Widgets)

# quarn_library(name SOURCES ... HEADERS ... LINK ...)
# A header must compile on its own. Where the source of its name includes it first, as tests/lint asks
# for, clang-tidy sees that; the others are compiled by the target all_verify_interface_header_sets.
function(quarn_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;HEADERS;LINK" ${ARGN})
  list(TRANSFORM ARG_SOURCES REPLACE "\\.cpp$" ".h" OUTPUT_VARIABLE with_source)
  set(alone ${ARG_HEADERS})
  list(REMOVE_ITEM alone ${with_source})
  add_library(${name} STATIC ${ARG_SOURCES})
  target_sources(
    ${name}
    PUBLIC FILE_SET HEADERS BASE_DIRS "${PROJECT_SOURCE_DIR}" FILES ${ARG_HEADERS}
           FILE_SET alone TYPE HEADERS BASE_DIRS "${PROJECT_SOURCE_DIR}" FILES ${alone})
  set_target_properties(${name} PROPERTIES INTERFACE_HEADER_SETS_TO_VERIFY alone)
  target_link_libraries(${name} PUBLIC ${ARG_LINK} PRIVATE quarn_build_flags)
  target_include_directories(${name} PUBLIC "${PROJECT_SOURCE_DIR}")
endfunction()

# quarn_module(target name SOURCES ... HEADERS ... LINK ... USES ...): a part of the program that
# ZModule opens by its name. USES names what it takes from the program, such as platform/, and must not
# link: it would bring a copy of its own.
function(quarn_module target name)
  cmake_parse_arguments(ARG "" "" "SOURCES;HEADERS;LINK;USES" ${ARGN})
  quarn_library(${target}_parts SOURCES ${ARG_SOURCES} HEADERS ${ARG_HEADERS} LINK ${ARG_LINK})
  file(CONFIGURE OUTPUT "${CMAKE_CURRENT_BINARY_DIR}/${target}.cpp" CONTENT "")
  add_library(${target} MODULE "${CMAKE_CURRENT_BINARY_DIR}/${target}.cpp")
  set_target_properties(
    ${target} PROPERTIES PREFIX "" OUTPUT_NAME ${name} AUTOMOC OFF
                         LIBRARY_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/modules"
                         LINK_LIBRARY_OVERRIDE "WHOLE_ARCHIVE,${target}_parts")
  target_link_libraries(${target} PRIVATE ${target}_parts quarn_build_flags)
endfunction()

# quarn_opens_modules(target [libraries...]): gives an executable all of these libraries, for the modules
# that it opens; all of platform/, files/, lang/ and the parts of boxes, unless others are named. They are
# an option of the linker: among the libraries CMake may name one twice, and only some linkers see that
# what they are to take as a whole is the same then.
function(quarn_opens_modules target)
  set(libraries ${ARGN})
  if(NOT libraries)
    set(libraries files lang platform platform_core widgets_boxes)
  endif()
  list(TRANSFORM libraries REPLACE "(.+)" "$<TARGET_FILE:\\1>")
  target_link_options(
    ${target} PRIVATE "LINKER:--push-state,--whole-archive" ${libraries} "LINKER:--pop-state")
  set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${libraries})
  set_target_properties(${target} PROPERTIES ENABLE_EXPORTS ON)
endfunction()

# quarn_with_needed(result targets...): these targets and all of the project that who links them needs.
function(quarn_with_needed result)
  set(all "")
  set(new ${ARGN})
  while(new)
    list(POP_FRONT new target)
    string(REGEX REPLACE "^\\$<LINK_ONLY:(.*)>$" "\\1" target "${target}")
    if(NOT TARGET "${target}" OR target IN_LIST all)
      continue()
    endif()
    get_target_property(is_imported ${target} IMPORTED)
    if(NOT is_imported)
      list(APPEND all ${target})
      get_target_property(needed ${target} INTERFACE_LINK_LIBRARIES)
      if(needed)
        list(APPEND new ${needed})
      endif()
    endif()
  endwhile()
  set(${result} ${all} PARENT_SCOPE)
endfunction()

add_library(libsystemd INTERFACE)
find_path(LIBSYSTEMD_INCLUDE_DIR systemd/sd-bus.h REQUIRED)
find_library(LIBSYSTEMD_LIBRARY systemd REQUIRED)
target_include_directories(libsystemd SYSTEM INTERFACE "${LIBSYSTEMD_INCLUDE_DIR}")
target_link_libraries(libsystemd INTERFACE "${LIBSYSTEMD_LIBRARY}")

add_library(libxcb INTERFACE)
find_path(LIBXCB_INCLUDE_DIR xcb/xcb.h REQUIRED)
find_library(LIBXCB_LIBRARY xcb REQUIRED)
target_include_directories(libxcb SYSTEM INTERFACE "${LIBXCB_INCLUDE_DIR}")
target_link_libraries(libxcb INTERFACE "${LIBXCB_LIBRARY}")

add_library(taglib INTERFACE)
find_path(TAGLIB_INCLUDE_DIR fileref.h PATH_SUFFIXES taglib REQUIRED)
find_library(TAGLIB_LIBRARY tag REQUIRED)
target_include_directories(taglib SYSTEM INTERFACE "${TAGLIB_INCLUDE_DIR}")
target_link_libraries(taglib INTERFACE "${TAGLIB_LIBRARY}")

add_library(simpleini INTERFACE)
find_path(SIMPLEINI_INCLUDE_DIR SimpleIni.h REQUIRED)
find_library(SIMPLEINI_LIBRARY simpleini REQUIRED)
target_include_directories(simpleini SYSTEM INTERFACE "${SIMPLEINI_INCLUDE_DIR}")
target_compile_definitions(simpleini INTERFACE SI_NO_CONVERSION)
target_link_libraries(simpleini INTERFACE "${SIMPLEINI_LIBRARY}")
