# The model and the non-widget kit must build without QtWidgets so that their tests run
# without a QApplication. Linking only Qt Core and Gui keeps <QWidget> out of reach, but the
# module-qualified form <QtWidgets/...> would still resolve through Qt's top include folder,
# so every source of such a library is checked at configure time as well.
function(vellumo_forbid_widgets target)
  get_target_property(sources ${target} SOURCES)
  get_target_property(source_dir ${target} SOURCE_DIR)
  foreach(source IN LISTS sources)
    cmake_path(ABSOLUTE_PATH source BASE_DIRECTORY "${source_dir}" OUTPUT_VARIABLE path)
    if(EXISTS "${path}")
      set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${path}")
      file(STRINGS "${path}" hits
           REGEX "^[ \t]*#[ \t]*include[ \t]*[<\"](QtWidgets|QApplication|QWidget|QDialog|QMainWindow)")
      if(hits)
        message(FATAL_ERROR "${path} includes a widget header, but ${target} must not depend on QtWidgets: ${hits}")
      endif()
    endif()
  endforeach()
endfunction()
