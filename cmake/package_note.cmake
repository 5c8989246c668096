# kalmo_package_note(TARGET NAME VERSION): puts an ELF package-metadata note into a program or library.
# The note (section .note.package, owner "FDO", type 0xcafe1a7e, a JSON text) is described by systemd in
# "Package Metadata for ELF Files"; the installer reads its version field to show what is installed.
set(KALMO_NOTE_TEMPLATE ${CMAKE_CURRENT_LIST_DIR}/package_note.S.in)

function(kalmo_package_note target note_name note_version)
  set(note_json "{\\\"name\\\":\\\"${note_name}\\\",\\\"version\\\":\\\"${note_version}\\\"}")
  set(note_file ${CMAKE_CURRENT_BINARY_DIR}/${target}_note.S)
  configure_file(${KALMO_NOTE_TEMPLATE} ${note_file} @ONLY)
  target_sources(${target} PRIVATE ${note_file})
endfunction()
