// Exists so that the headers of the standard library have a target that compiles them once for all libraries.
