# Writes the session bus's service file with the program's installed path.
set(CMAKE_INSTALL_FULL_BINDIR "${CMAKE_INSTALL_PREFIX}/${KELVANE_BINDIR}")
file(READ "${KELVANE_SERVICE_IN}" text)
string(CONFIGURE "${text}" text @ONLY)
set(target "$ENV{DESTDIR}${CMAKE_INSTALL_PREFIX}/${KELVANE_SERVICE}")
message(STATUS "Installing: ${target}")
file(WRITE "${target}" "${text}")
