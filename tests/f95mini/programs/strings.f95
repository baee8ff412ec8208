! CHARACTER: assignment with padding and cutting, concatenation, substrings, comparison,
! LEN, LEN_TRIM, TRIM, CHAR/ICHAR, CHARACTER(*) dummies and a CHARACTER function; last,
! CHAR of a value outside 0-255 (error 15, checked in every build).
program strings
  implicit none
  character(len=8) :: a
  character*5 :: b
  character(len=20) :: c
  character(len=*), parameter :: greeting = 'Hello'
  integer :: i
  a = 'abc'
  b = 'truncated'
  print *, '[', a, ']', len(a), len_trim(a)
  print *, '[', b, ']'
  c = trim(a) // '-' // b // '!'
  print *, c
  print *, c(5:9), c(:3), c(19:)
  c(1:1) = 'X'
  print *, c(1:3)
  print *, greeting // ', world'
  if (a < 'abd') print *, 'a < abd'
  if (a == 'abc') print *, 'a == abc (blank padded)'
  if ('b' > a) print *, 'b > a'
  do i = 1, 3
    a(i:i) = char(ichar('a') + i + 22)
  end do
  print *, a
  call shout('quiet', i)
  print *, 'length passed', i
  print *, initials('John', 'Smith')
  i = 300
  a = char(i)
  print *, 'never'
contains
  subroutine shout(s, n)
    character(len=*) :: s
    integer :: n
    integer :: k
    character(len=10) :: t
    t = s
    do k = 1, len(s)
      t(k:k) = char(ichar(s(k:k)) - 32)
    end do
    print *, t
    n = len(s)
  end subroutine shout
  function initials(first, last)
    character(len=*) :: first, last
    character(len=4) :: initials
    initials = first(1:1) // '.' // last(1:1) // '.'
  end function initials
end program strings
