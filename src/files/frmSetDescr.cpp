// The header editor.
