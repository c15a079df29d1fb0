# Run by cmake --install: installs the INI files in /etc and the link log in /var/log, and makes links to them in the
# directory of the programs, where they open them.
set(program_directory ${CMAKE_INSTALL_PREFIX}/lib/tarnbeacon)
if(CMAKE_INSTALL_PREFIX STREQUAL "/usr")
  set(root "")
else()
  set(root ${CMAKE_INSTALL_PREFIX})
endif()
set(settings ${root}/etc/tarnbeacon)
set(log ${root}/var/log/tarnbeacon)

function(link_to target link)
  message(STATUS "Installing: $ENV{DESTDIR}${link} -> ${target}")
  file(CREATE_LINK ${target} $ENV{DESTDIR}${link} SYMBOLIC)
endfunction()

# Files of an earlier installation may have been edited.
function(install_once source folder name)
  if(NOT EXISTS $ENV{DESTDIR}${folder}/${name})
    file(INSTALL ${CMAKE_CURRENT_LIST_DIR}/${source} DESTINATION ${folder} RENAME ${name})
  endif()
endfunction()

foreach(name Setting.INI TYPE.INI)
  install_once(${name} ${settings} ${name})
  link_to(${settings}/${name} ${program_directory}/${name})
endforeach()

file(MAKE_DIRECTORY $ENV{DESTDIR}${log})
link_to(${log}/KelpLog.txt ${program_directory}/KelpLog.txt)
if(root STREQUAL "")
  install_once(debian/logrotate /etc/logrotate.d tarnbeacon)
endif()

if("$ENV{DESTDIR}" STREQUAL "")
  # Every user of the program appends to the log; with a package, postinst sets these rights.
  file(TOUCH ${log}/KelpLog.txt)
  execute_process(COMMAND chgrp dialout ${log}/KelpLog.txt RESULT_VARIABLE failed ERROR_QUIET)
  if(failed)
    message(STATUS "The link log stays writable for you alone: its group could not be set to dialout.")
  else()
    execute_process(COMMAND chmod 0664 ${log}/KelpLog.txt)
  endif()
endif()
