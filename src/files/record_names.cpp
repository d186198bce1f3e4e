// Renaming and deleting record files.
