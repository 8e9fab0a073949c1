# The program folder stands in lib/calvorin, links to its programs in bin. Two components: calvorin is
# complete without windows, desktop adds its module, the help and what the desktop of a system wants.
include(GNUInstallDirs)
set(PROGRAM_FOLDER lib/calvorin)
set(DOC_FOLDER ${CMAKE_INSTALL_DATAROOTDIR}/doc)

install(TARGETS calvorin calvorin-sim RUNTIME DESTINATION ${PROGRAM_FOLDER} COMPONENT calvorin)
install(DIRECTORY ${CMAKE_SOURCE_DIR}/devices/Device ${CMAKE_SOURCE_DIR}/devices/RamImage
  DESTINATION ${PROGRAM_FOLDER} COMPONENT calvorin)
function(install_link name target folder component)
  file(MAKE_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR}/links)
  file(CREATE_LINK ${target} ${CMAKE_CURRENT_BINARY_DIR}/links/${name} SYMBOLIC)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/links/${name} DESTINATION ${folder}
    COMPONENT ${component})
endfunction()
foreach(program calvorin calvorin-sim)
  install_link(${program} ../${PROGRAM_FOLDER}/${program} ${CMAKE_INSTALL_BINDIR} calvorin)
endforeach()

foreach(page calvorin calvorin-sim)
  add_custom_command(OUTPUT ${REFERENCE}/${page}.1.gz
    COMMAND gzip -9nkf ${REFERENCE}/${page}.1 DEPENDS ${REFERENCE}/${page}.1)
  list(APPEND PAGES ${REFERENCE}/${page}.1.gz)
endforeach()
add_custom_target(calvorin_man_pages ALL DEPENDS ${PAGES})
install(FILES ${PAGES} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT calvorin)
foreach(program calvorin calvorin-sim)
  install(FILES ${REFERENCE}/${program}.bash RENAME ${program}
    DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/bash-completion/completions COMPONENT calvorin)
endforeach()
install(FILES ${REFERENCE}/_calvorin ${REFERENCE}/_calvorin-sim
  DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/zsh/vendor-completions COMPONENT calvorin)
install(FILES ${REFERENCE}/calvorin.fish ${REFERENCE}/calvorin-sim.fish
  DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/fish/vendor_completions.d COMPONENT calvorin)
install(FILES 70-calvorin.rules DESTINATION lib/udev/rules.d COMPONENT calvorin)

# The logs of changes and the licence as a system wants them, of both components.
configure_file(changelog.in ${CMAKE_CURRENT_BINARY_DIR}/changelog @ONLY)
execute_process(COMMAND gzip -9nkf ${CMAKE_CURRENT_BINARY_DIR}/changelog)
foreach(component calvorin desktop)
  set(folder ${DOC_FOLDER}/calvorin)
  if(component STREQUAL desktop)
    string(APPEND folder -desktop)
  endif()
  if(component STREQUAL calvorin OR TARGET calvorin_desktop)
    install(FILES copyright ${CMAKE_CURRENT_BINARY_DIR}/changelog.gz
      DESTINATION ${folder} COMPONENT ${component})
  endif()
endforeach()
foreach(document command-line ports files add-a-device virtual-chip)
  install(FILES ${CMAKE_SOURCE_DIR}/docs/${document}.md
    DESTINATION ${DOC_FOLDER}/calvorin COMPONENT calvorin)
endforeach()
install(PROGRAMS ${CMAKE_SOURCE_DIR}/scripts/demo.sh
  DESTINATION ${DOC_FOLDER}/calvorin/examples COMPONENT calvorin)

if(NOT TARGET calvorin_desktop)
  return()
endif()
# One folder deeper, as the package maker takes a module right below lib/* for a library of the system
# and has every installation and removal run ldconfig.
install(TARGETS calvorin_desktop LIBRARY DESTINATION ${PROGRAM_FOLDER}/desktop COMPONENT desktop)
install_link(calvorin-desktop.so desktop/calvorin-desktop.so ${PROGRAM_FOLDER} desktop)
install(FILES ${CMAKE_SOURCE_DIR}/src/ui/Calvorin.hlp
  DESTINATION ${PROGRAM_FOLDER} COMPONENT desktop)
# The same program under a name of its own, so that the package of the desktop has a command.
install_link(calvorin-desktop ../${PROGRAM_FOLDER}/calvorin ${CMAKE_INSTALL_BINDIR} desktop)
install_link(calvorin-desktop.1.gz calvorin.1.gz ${CMAKE_INSTALL_MANDIR}/man1 desktop)
install(FILES org.calvorin.Calvorin.desktop
  DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/applications COMPONENT desktop)
configure_file(org.calvorin.Calvorin.metainfo.xml.in
  ${CMAKE_CURRENT_BINARY_DIR}/org.calvorin.Calvorin.metainfo.xml @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/org.calvorin.Calvorin.metainfo.xml
  DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/metainfo COMPONENT desktop)
install(FILES calvorin-mime.xml RENAME calvorin.xml
  DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/mime/packages COMPONENT desktop)
set(ICON_FOLDER ${CMAKE_INSTALL_DATAROOTDIR}/icons/hicolor)
install(FILES calvorin.svg DESTINATION ${ICON_FOLDER}/scalable/apps COMPONENT desktop)
foreach(size 32 48 64 128 256)
  install(FILES icons/calvorin-${size}.png RENAME calvorin.png
    DESTINATION ${ICON_FOLDER}/${size}x${size}/apps COMPONENT desktop)
endforeach()
