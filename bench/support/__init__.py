"""What bench/process is made of: the programs, their library, and an ear on the sound."""
