// Tests follow.
