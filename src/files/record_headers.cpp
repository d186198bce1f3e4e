// Reading and rewriting the header of a record file.
