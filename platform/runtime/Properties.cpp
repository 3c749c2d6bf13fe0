// Implemented next.
