! Variables read and written, for the data breakpoint tests. The tests find lines by the
! marker comments.
program data_watch
  implicit none
  integer :: watched, copy, j
  integer :: triple(3)
  character(len=7) :: seven
  real(8) :: wide(4), wider(5)
  watched = 0                ! start
  copy = 0
  do j = 1, 3
    copy = copy + watched    ! reads watched
    watched = j * 10         ! writes watched
  end do
  triple(3) = 4              ! writes triple tail
  triple(1) = 5              ! writes triple head
  seven(6:7) = 'fg'          ! writes seven tail
  seven(1:3) = 'abc'         ! writes seven head
  wide(4) = 1.5d0            ! writes wide
  wider(1) = 2.5d0
  print *, watched, copy, triple(1), triple(3), seven(1:3), wide(4), wider(1)
end program data_watch
