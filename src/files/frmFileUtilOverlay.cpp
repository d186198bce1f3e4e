// File utilities and the overlay of two tests.
