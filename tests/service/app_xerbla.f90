! A Fortran application with its own XERBLA, built with 64-bit default
! integers against libnxl.so: a bad argument of DGEMM must reach this XERBLA
! with the routine's name, its length and the argument's position.
module seen
  implicit none
  character(len=32) :: got_name = ' '
  integer :: got_info = -99, got_len = -1, got_calls = 0
end module seen

subroutine xerbla(srname, info)
  use seen
  implicit none
  character(len=*), intent(in) :: srname
  integer, intent(in) :: info
  got_name = srname
  got_len = len(srname)
  got_info = info
  got_calls = got_calls + 1
end subroutine xerbla

program app_xerbla
  use seen
  implicit none
  double precision :: a(4), b(4), c(4)
  a = 1d0
  b = 1d0
  c = 0d0
  call dgemm('X', 'N', 2, 2, 2, 1d0, a, 2, b, 2, 0d0, c, 2)
  if (got_calls /= 1 .or. got_info /= 1 .or. trim(got_name) /= 'DGEMM' .or. got_len < 5) then
    print *, 'FAIL first: ', got_calls, got_info, got_len, '[', trim(got_name), ']'
    stop 1
  end if
  call dgemm('N', 'N', 2, 2, 2, 1d0, a, 1, b, 2, 0d0, c, 2)
  if (got_calls /= 2 .or. got_info /= 8) then
    print *, 'FAIL second: ', got_calls, got_info
    stop 1
  end if
  print *, 'ok'
end program app_xerbla
