# Checks that the source folders depend on each other in one direction only:
#
#   platform  <-  model  <-  net, config  <-  everything that draws
#
# A file may include headers of its own folder and of the folders below it.
# net and config sit side by side and stay independent of each other. The
# folders that draw (images, danmaku, views, app, browse, account, player and
# any folder added later) may use each other and everything below. The core
# folders also stay clear of Qt's UI modules, so the service client, the
# records and the configuration build and test without a display.
#
# Usage: cmake -DSOURCE_DIR=<folder holding src/> -P zuvi_check_layers.cmake

cmake_minimum_required(VERSION 3.24)

if(NOT SOURCE_DIR)
  message(FATAL_ERROR "SOURCE_DIR is not set")
endif()

set(zuvi_layer_platform 0)
set(zuvi_layer_model 1)
set(zuvi_layer_net 2)
set(zuvi_layer_config 2)
# Folders not named above are drawing folders.
set(zuvi_drawing_layer 3)

# Headers of Qt's UI modules, by module folder or by class name.
set(zuvi_ui_header_regex
    "^(QtGui|QtQml|QtQuick|QtQuickControls2|QtMultimedia|QtSvg|QtWidgets)/|^Q(Gui|Quick|Qml|Image|Pixmap|Painter|Color|Font|Media|Svg|Widget|Window|Screen|Icon)")

function(zuvi_layer_of folder out)
  if(DEFINED zuvi_layer_${folder})
    set(${out} ${zuvi_layer_${folder}} PARENT_SCOPE)
  else()
    set(${out} ${zuvi_drawing_layer} PARENT_SCOPE)
  endif()
endfunction()

file(GLOB zuvi_folders RELATIVE ${SOURCE_DIR}/src LIST_DIRECTORIES true ${SOURCE_DIR}/src/*)
set(zuvi_src_folders "")
foreach(folder ${zuvi_folders})
  if(IS_DIRECTORY ${SOURCE_DIR}/src/${folder})
    list(APPEND zuvi_src_folders ${folder})
  endif()
endforeach()

set(zuvi_violations "")
file(GLOB_RECURSE zuvi_files RELATIVE ${SOURCE_DIR}
     ${SOURCE_DIR}/src/*.h ${SOURCE_DIR}/src/*.hpp ${SOURCE_DIR}/src/*.cpp)
list(SORT zuvi_files)
foreach(path ${zuvi_files})
  string(REGEX REPLACE "^src/([^/]+)/.*" "\\1" own "${path}")
  if(own STREQUAL path)
    continue() # a file directly in src/ belongs to no layer
  endif()
  zuvi_layer_of(${own} own_layer)
  file(STRINGS ${SOURCE_DIR}/${path} lines REGEX "^[ \t]*#[ \t]*include")
  foreach(line ${lines})
    if(line MATCHES "#[ \t]*include[ \t]*\"([^\"]+)\"")
      set(target "${CMAKE_MATCH_1}")
      string(REGEX REPLACE "^(\\.\\./)+" "" target "${target}")
      if(NOT target MATCHES "/")
        continue() # a header of the file's own folder
      endif()
      string(REGEX REPLACE "/.*" "" folder "${target}")
      list(FIND zuvi_src_folders ${folder} known)
      if(known EQUAL -1 OR folder STREQUAL own)
        continue()
      endif()
      zuvi_layer_of(${folder} folder_layer)
      if(folder_layer GREATER_EQUAL own_layer AND own_layer LESS zuvi_drawing_layer)
        list(APPEND zuvi_violations
             "${path}: ${own} includes ${target}, but ${folder} is not below ${own}")
      endif()
    elseif(own_layer LESS zuvi_drawing_layer AND line MATCHES "#[ \t]*include[ \t]*<([^>]+)>")
      set(header "${CMAKE_MATCH_1}")
      if(header MATCHES "${zuvi_ui_header_regex}")
        list(APPEND zuvi_violations "${path}: ${own} includes <${header}>, a Qt UI header")
      endif()
    endif()
  endforeach()
endforeach()

if(zuvi_violations)
  # One unwrapped line per break, so that each names its file in full.
  message(NOTICE "Includes that break the layering:")
  foreach(violation ${zuvi_violations})
    message(NOTICE "  ${violation}")
  endforeach()
  list(LENGTH zuvi_violations count)
  message(FATAL_ERROR "${count} includes break the layering")
endif()
list(LENGTH zuvi_files count)
message(STATUS "${count} files follow the layering")
