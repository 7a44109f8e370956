# Keeping all of a person's data in one file, and putting it back.
set(PEDVAR_BACKUP_SOURCES
    backup/backup_file.cpp
    backup/data_copy.cpp
    backup/data_folder.cpp)
