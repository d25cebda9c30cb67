# Where `cmake --install` puts what is staged. A work folder is one folder; an installed program has its
# parts where the system keeps such parts, and the launcher makes a work folder of links to them.

include(GNUInstallDirs)

set(QUARN_VERSION "${PROJECT_VERSION}" CACHE STRING "The version that the launcher tells, as the package has it")

# The programs of a work folder except those of bin/, and its data.
set(QUARN_INSTALL_PROGRAMS "${CMAKE_INSTALL_LIBEXECDIR}/quarn")
set(QUARN_INSTALL_DATA "${CMAKE_INSTALL_DATADIR}/quarn")

# quarn_install_data(path files...): files that lie at this path of a work folder. The launcher links
# the first of them; res/ is linked as a whole.
function(quarn_install_data path)
  get_filename_component(folder "${path}" DIRECTORY)
  install(FILES ${ARGN} DESTINATION "${QUARN_INSTALL_DATA}/${folder}")
  if(NOT path MATCHES "^res/")
    foreach(file IN LISTS ARGN)
      get_filename_component(name "${file}" NAME)
      string(REGEX REPLACE "^/" "" linked "${folder}/${name}")
      set_property(GLOBAL APPEND PROPERTY QUARN_LINKED_DATA "${linked}")
    endforeach()
  endif()
endfunction()

# quarn_install_program(path target): a program or module that lies at this path of a work folder.
# Those of bin/ are for everybody to call, bin/quarn-* through the launcher, which gives them the user's
# work folder. Modules are found beside the executable that a link leads to.
function(quarn_install_program path target)
  get_filename_component(folder "${path}" DIRECTORY)
  set(destination "${QUARN_INSTALL_PROGRAMS}/${folder}")
  if(path MATCHES "^bin/quarn-")
    set_property(GLOBAL APPEND PROPERTY QUARN_LINKED_PROGRAMS "${path}")
    set_property(GLOBAL APPEND PROPERTY QUARN_LAUNCHED "${path}")
  elseif(folder STREQUAL "bin")
    set(destination "${CMAKE_INSTALL_BINDIR}")
    set_property(GLOBAL APPEND PROPERTY QUARN_LINKED_TOOLS "${path}")
  elseif(NOT folder STREQUAL "modules")
    set_property(GLOBAL APPEND PROPERTY QUARN_LINKED_PROGRAMS "${path}")
  endif()
  install(TARGETS ${target} RUNTIME DESTINATION "${destination}" LIBRARY DESTINATION "${destination}")
endfunction()
