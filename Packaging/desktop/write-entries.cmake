# Writes what names the program's place, into `staged`. Run at installation: only then the prefix is known.
cmake_path(ABSOLUTE_PATH bin_folder BASE_DIRECTORY "${CMAKE_INSTALL_PREFIX}" NORMALIZE OUTPUT_VARIABLE program)
string(APPEND program "/VQMKeygrab")
# % begins a field code or a specifier. A quoted argument of a desktop entry is escaped twice.
string(REPLACE "%" "%%" program "${program}")
set(VQM_UNIT_PROGRAM "${program}")
string(REGEX REPLACE "([\"`$\\])" "\\\\\\\\\\1" VQM_ENTRY_PROGRAM "${program}")
foreach(name vqmkeygrab.service application.desktop autostart.desktop)
    configure_file("${templates}/${name}.in" "${staged}/${name}" @ONLY)
endforeach()
