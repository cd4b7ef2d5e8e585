# dax_sqlite is SQLite: the system's library, or, for Windows, which has none, compiled once from the one file that
# tools/setup has made of Debian's source package, and linked statically.
option(DAX_SQLITE_COMPILED "Compile SQLite instead of using the system's library" ${WIN32})
add_library(dax_sqlite INTERFACE)
if(NOT DAX_SQLITE_COMPILED)
  find_package(SQLite3 3.40 REQUIRED)
  target_link_libraries(dax_sqlite INTERFACE SQLite::SQLite3)
  return()
endif()

set(DAX_SQLITE_SOURCE ${CMAKE_SOURCE_DIR}/build/setup/sqlite CACHE PATH "The folder of sqlite3.c and sqlite3.h")
if(NOT EXISTS ${DAX_SQLITE_SOURCE}/sqlite3.c)
  message(FATAL_ERROR "There is no ${DAX_SQLITE_SOURCE}/sqlite3.c. Run tools/setup sqlite, or name the folder that has "
                      "it: -DDAX_SQLITE_SOURCE=...")
endif()
enable_language(C)
set(CMAKE_C_COMPILER_LAUNCHER ${CMAKE_CXX_COMPILER_LAUNCHER})
string(REPLACE "-O3" "-O2" CMAKE_C_FLAGS_RELEASE "${CMAKE_C_FLAGS_RELEASE}")
add_library(dax_sqlite_compiled STATIC ${DAX_SQLITE_SOURCE}/sqlite3.c)
# Statements must mean the same with the system's library, so nothing here changes what SQL is understood.
target_compile_definitions(dax_sqlite_compiled PRIVATE
  SQLITE_THREADSAFE=1             # as the system's library: Cancel interrupts from another thread
  SQLITE_ENABLE_COLUMN_METADATA   # as the system's library: the same functions are there
  SQLITE_OMIT_LOAD_EXTENSION      # an untrusted course file must not make us load a library
  SQLITE_TRUSTED_SCHEMA=0         # nor may its views and triggers call functions with effects outside the file
  SQLITE_USE_URI=0                # a path is a path: no parameters in it
  SQLITE_OMIT_SHARED_CACHE        # each connection has its own cache; sharing only costs checks
  SQLITE_OMIT_DEPRECATED          # nothing of it is used
)
# Third-party code: its warnings are off, and its header is a system header. Without dllexport marks
# and with the modules' own export lists, no module exports any of it.
target_compile_options(dax_sqlite_compiled PRIVATE -w)
target_include_directories(dax_sqlite_compiled SYSTEM INTERFACE ${DAX_SQLITE_SOURCE})
target_link_libraries(dax_sqlite INTERFACE dax_sqlite_compiled)
