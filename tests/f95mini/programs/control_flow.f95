! IF/ELSE IF/ELSE, logical IF, DO WHILE, DO forever with EXIT, named loops with CYCLE and
! EXIT, RETURN, CONTINUE, WRITE(*,*) and WRITE(6,*), and comparisons in both spellings; last, a DO increment that
! is 0 at run time (error 14).
program control_flow
  implicit none
  integer :: i, j, n
  logical :: flags(3)
  n = 0
  do while (n < 5)
    n = n + 2
  end do
  write (*, *) 'n =', n
  do
    n = n - 1
    if (n .le. 3) exit
  end do
  write (6, *) 'n now', n
  continue
  outer: do i = 1, 3
    inner: do j = 1, 3
      if (j == 2) cycle inner
      if (i == 3) exit outer
      write (*, *) i, j
    end do inner
  end do outer
  do i = -1, 2
    if (i < 0) then
      print *, i, 'negative'
    else if (i .eq. 0) then
      print *, i, 'zero'
    else if (i >= 2 .and. i /= 3) then
      print *, i, 'two or more'
    else
      print *, i, 'one'
    end if
  end do
  flags(1) = .true.
  flags(2) = 1 > 2
  flags(3) = .not. flags(2) .and. flags(1)
  print *, flags
  print *, classify(5), classify(-5)
  n = 0
  do i = 1, 10, n
    print *, 'never'
  end do
contains
  integer function classify(v)
    integer :: v
    classify = 1
    if (v > 0) return
    classify = -1
  end function classify
end program control_flow
