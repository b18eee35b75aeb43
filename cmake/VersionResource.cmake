# Names a library's version where Windows shows it, in the file's properties.
#
#   add_version_resource(<target> <description>)
#
# Does nothing for other systems.

function(add_version_resource target description)
    if(NOT WIN32)
        return()
    endif()
    enable_language(RC)
    string(REPLACE "." "," numbers "${PROJECT_VERSION}.0")
    set(file ${CMAKE_CURRENT_BINARY_DIR}/${target}-version.rc)
    file(CONFIGURE OUTPUT ${file} @ONLY CONTENT [=[
1 VERSIONINFO
FILEVERSION @numbers@
PRODUCTVERSION @numbers@
FILEFLAGSMASK 0x3F
FILEOS 0x40004
FILETYPE 2
BEGIN
  BLOCK "StringFileInfo"
  BEGIN
    BLOCK "040904B0"
    BEGIN
      VALUE "FileDescription", "@description@"
      VALUE "FileVersion", "@PROJECT_VERSION@"
      VALUE "InternalName", "@target@"
      VALUE "OriginalFilename", "@target@.dll"
      VALUE "ProductName", "Comments panel"
      VALUE "ProductVersion", "@PROJECT_VERSION@"
    END
  END
  BLOCK "VarFileInfo"
  BEGIN
    VALUE "Translation", 0x409, 1200
  END
END
]=])
    target_sources(${target} PRIVATE ${file})
endfunction()
