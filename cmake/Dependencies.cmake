# The parts that are not ours.

find_package(PkgConfig REQUIRED)
find_package(Threads REQUIRED)
find_package(Boost REQUIRED COMPONENTS system filesystem thread)

pkg_check_modules(EXPAT REQUIRED IMPORTED_TARGET expat)
pkg_check_modules(ELEMENTARY REQUIRED IMPORTED_TARGET elementary evas ecore ecore-x)

if(VQM_PLATFORM STREQUAL desktop)
    pkg_check_modules(ECORE REQUIRED IMPORTED_TARGET ecore ecore-file eina)
    pkg_check_modules(ELDBUS REQUIRED IMPORTED_TARGET eldbus)
    pkg_check_modules(GIO REQUIRED IMPORTED_TARGET gio-unix-2.0)
    pkg_check_modules(X11 REQUIRED IMPORTED_TARGET x11)
    pkg_check_modules(XTST REQUIRED IMPORTED_TARGET xtst)
    find_package(CLI11 REQUIRED)
endif()
