# Runs at installation, with TOOL_FOLDER (relative to the prefix) and PROJECT_FOLDER set.

# install_once(<file> <folder>): a configuration is the machine's once it is there.
function(install_once file folder)
  get_filename_component(name ${file} NAME)
  if(NOT EXISTS "$ENV{DESTDIR}${folder}/${name}")
    file(INSTALL "${PROJECT_FOLDER}/${file}" DESTINATION "${folder}")
  endif()
endfunction()

# Installs the configuration that all users share, and the link by which the plugin finds it beside the program.
function(install_configuration)
  # What is installed below /usr has its configuration in /etc; the prefix of a package in the making ends in /usr too.
  set(configuration etc/ups-host)
  if(CMAKE_INSTALL_PREFIX MATCHES "/usr$")
    set(configuration ../etc/ups-host)
  endif()
  get_filename_component(configuration "${CMAKE_INSTALL_PREFIX}/${configuration}" ABSOLUTE)
  install_once(packaging/configuration/serial.ini "${configuration}")
  foreach(file packaging/configuration/dev.ini demo/param.ini demo/historycodemap.csv)
    install_once(${file} "${configuration}/drovaPanel/db")
  endforeach()

  # Relative, so that the tree holds together below any root.
  set(folder "${CMAKE_INSTALL_PREFIX}/${TOOL_FOLDER}")
  file(RELATIVE_PATH target "${folder}" "${configuration}")
  file(MAKE_DIRECTORY "$ENV{DESTDIR}${folder}/vendor")
  file(CREATE_LINK "${target}" "$ENV{DESTDIR}${folder}/PVMX" SYMBOLIC)
endfunction()

install_configuration()
