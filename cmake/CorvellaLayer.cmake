# A layer is a folder of the tree and a target of the same name. Its sources see no other folders than
# the ones it may include: they are compiled against an include root that holds links to just those.

# Makes, once, the include root called NAME with a link for each of FOLDERS, and stores its path in OUT.
function(corvella_include_root OUT NAME)
  set(root "${PROJECT_BINARY_DIR}/include-roots/${NAME}")
  file(MAKE_DIRECTORY "${root}")
  foreach(folder IN LISTS ARGN)
    file(CREATE_LINK "${PROJECT_SOURCE_DIR}/${folder}" "${root}/${folder}" SYMBOLIC)
  endforeach()
  set(${OUT} "${root}" PARENT_SCOPE)
endfunction()

# The compiler settings that every target of this project shares.
function(corvella_target_options TARGET)
  target_compile_options(${TARGET} PRIVATE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wnon-virtual-dtor
    -Woverloaded-virtual -Wold-style-cast -Wcast-qual -Wformat=2 -Wimplicit-fallthrough)
  # A compiler that is newer than the project may have new warnings: cmake --compile-no-warning-as-error
  # builds with them.
  set_target_properties(${TARGET} PROPERTIES COMPILE_WARNING_AS_ERROR ON)
  if(CORVELLA_ASSERTIONS)
    # Not the stricter _GLIBCXX_DEBUG: it gives containers another layout, and those in the interfaces
    # of GoogleTest and TagLib have the ordinary one.
    target_compile_definitions(${TARGET} PRIVATE _GLIBCXX_ASSERTIONS)
  endif()
  if(CORVELLA_SANITIZE)
    target_compile_options(${TARGET} PRIVATE -fsanitize=${CORVELLA_SANITIZE}
                           -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(${TARGET} PRIVATE -fsanitize=${CORVELLA_SANITIZE})
  endif()
endfunction()

# corvella_layer(NAME SOURCES file... [SEES folder...] [LINKS target...] [USES library...])
#
# SEES   the folders whose headers the layer may include, besides its own; each that is a layer is linked
# LINKS  further targets to link, visible to those who link the layer
# USES   libraries from outside, known to the layer alone
function(corvella_layer NAME)
  cmake_parse_arguments(arg "" "FOLDER" "SOURCES;SEES;LINKS;USES" ${ARGN})
  if(NOT arg_FOLDER)
    set(arg_FOLDER ${NAME})
  endif()
  add_library(${NAME} STATIC ${arg_SOURCES})
  corvella_include_root(root ${NAME} ${arg_FOLDER} ${arg_SEES})
  target_include_directories(${NAME} PRIVATE "${root}")
  target_link_libraries(${NAME} PUBLIC ${arg_SEES} ${arg_LINKS} PRIVATE ${arg_USES})
  corvella_target_options(${NAME})
endfunction()
