// The version resource that both libraries share; DAX_FILE and DAX_DESCRIPTION are the including file's.
1 VERSIONINFO
FILEVERSION 3, 3, 0, 1
PRODUCTVERSION 3, 3, 0, 1
FILEFLAGSMASK 0x3fL
FILEFLAGS 0
FILEOS 0x40004L
FILETYPE 0x2L
BEGIN
    BLOCK "StringFileInfo"
    BEGIN
        BLOCK "040904B0"
        BEGIN
            VALUE "Comments", "Visual components for course content databases"
            VALUE "CompanyName", "Velmora"
            VALUE "FileDescription", DAX_DESCRIPTION
            VALUE "FileVersion", "3.3.0.1"
            VALUE "InternalName", DAX_FILE
            VALUE "OLESelfRegister", ""
            VALUE "OriginalFilename", DAX_FILE
            VALUE "ProductName", "Velmora DAX Controls"
            VALUE "ProductVersion", "3.3"
        END
    END
    BLOCK "VarFileInfo"
    BEGIN
        VALUE "Translation", 0x0409, 1200
    END
END
