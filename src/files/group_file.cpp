// The two tests of an overlay as one file.
